#include <tessel/RasDescriptor.h>

#include <tessel/Logger.h>
#include <tessel/RAS.h>

#include "internal/TraceSwitch.h"

namespace tessel {

RasDescriptor::RasDescriptor(const std::string& className, const std::string& messageBundle)
    : RasDescriptor(className, messageBundle, Logger::getLogger(className)) {}

RasDescriptor::RasDescriptor(const std::string& className, const std::string& messageBundle, Logger* logger)
    : logger_(logger), className_(className), messageBundle_(messageBundle) {}

RasDescriptor::RasDescriptor(const std::string& className)
    : RasDescriptor(className, std::string(), Logger::getLogger(className)) {}

RasDescriptor::RasDescriptor(const std::string& className, Logger* logger)
    : RasDescriptor(className, std::string(), logger) {}

RasDescriptor::RasDescriptor() : logger_(nullptr) {}

RasDescriptor::RasDescriptor(const RasDescriptor& other) = default;
RasDescriptor& RasDescriptor::operator=(const RasDescriptor& other) = default;
RasDescriptor::~RasDescriptor() = default;

std::string RasDescriptor::getClassName() const { return className_; }
std::string RasDescriptor::getMessageBundle() const { return messageBundle_; }
Logger* RasDescriptor::getLogger() const { return logger_; }
bool RasDescriptor::isDebug() const { return logger_ == nullptr; }

bool RasDescriptor::isOn(const TraceLevel& level) const {
  if (!internal::traceMayBeOn()) return false;
  if (isDebug()) return RAS::isDebugOn(level);
  if (!RAS::isTraceAvailable()) return false;
  switch (level.getValue()) {
    case TraceLevel::FLOW:
      return logger_->isLoggable(LogLevel::FINE);
    case TraceLevel::MODERATE:
      return logger_->isLoggable(LogLevel::FINER);
    case TraceLevel::VERBOSE:
      return logger_->isLoggable(LogLevel::FINEST);
    default:
      return false;
  }
}

bool RasDescriptor::isFlowOn() const { return isOn(TraceLevel::FLOW); }

}  // namespace tessel
