#include <tessel/LogHandler.h>

#include <ostream>

namespace tessel {

LogHandler::LogHandler(const LogLevel& level) : level_(level) {}

LogHandler::~LogHandler() = default;

const LogLevel& LogHandler::getLogLevel() const { return level_; }

std::ostream& operator<<(std::ostream& stream, const LogHandler& handler) {
  return stream << "Level: " << handler.getLogLevel();
}

}  // namespace tessel
