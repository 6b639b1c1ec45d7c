#include <tessel/LogLevel.h>

#include <ostream>

namespace tessel {
namespace {

struct Shown {
  const char* name;
  char indicator;
};

Shown shown(int value) {
  switch (value) {
    case LogLevel::ALL:
      return {"ALL    ", 'A'};
    case LogLevel::FINEST:
      return {"FINEST ", 'F'};
    case LogLevel::FINER:
      return {"FINER  ", 'F'};
    case LogLevel::FINE:
      return {"FINE   ", 'F'};
    case LogLevel::CONFIG:
      return {"CONFIG ", 'C'};
    case LogLevel::INFO:
      return {"INFO   ", 'I'};
    case LogLevel::WARNING:
      return {"WARNING", 'W'};
    case LogLevel::SEVERE:
      return {"SEVERE ", 'E'};
    case LogLevel::OFF:
      return {"OFF    ", 'O'};
    default:
      return {"???    ", '?'};
  }
}

}  // namespace

LogLevel::LogLevel() : value_(OFF) {}
LogLevel::LogLevel(const LogLevelValue& value) : value_(value) {}
LogLevel::LogLevel(const LogLevel& other) = default;
LogLevel& LogLevel::operator=(const LogLevel& other) = default;
LogLevel::~LogLevel() = default;

bool LogLevel::operator==(const LogLevel& other) const { return value_ == other.value_; }
bool LogLevel::operator!=(const LogLevel& other) const { return value_ != other.value_; }
bool LogLevel::operator>=(const LogLevel& other) const { return value_ >= other.value_; }

char LogLevel::getIndicator() const { return shown(value_).indicator; }
std::string LogLevel::toString() const { return shown(value_).name; }
int LogLevel::getValue() const { return value_; }

std::ostream& operator<<(std::ostream& stream, const LogLevel& level) { return stream << level.toString(); }

}  // namespace tessel
