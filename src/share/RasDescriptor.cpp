#include <tessel/RasDescriptor.h>

#include <tessel/Logger.h>

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

// Asked at every trace point while trace is available: it makes no objects and, for a class with a logger, no
// calls.
bool RasDescriptor::isOnAt(int level) const {
  if (!logger_) return internal::traceMayBeOn() && internal::debugIsOn(level);
  if (!internal::traceAvailable.load(std::memory_order_relaxed)) return false;
  if (level == TraceLevel::FLOW) [[likely]]  // what each method asks for
    return logger_->passes(LogLevel::FINE);
  switch (level) {
    case TraceLevel::MODERATE:
      return logger_->passes(LogLevel::FINER);
    case TraceLevel::VERBOSE:
      return logger_->passes(LogLevel::FINEST);
    default:
      return false;
  }
}

bool RasDescriptor::isOn(const TraceLevel& level) const { return isOnAt(level.value_); }

bool RasDescriptor::isFlowOn() const { return isOnAt(TraceLevel::FLOW); }

}  // namespace tessel
