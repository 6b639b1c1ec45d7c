#include <tessel/EventLog.h>

#include <iostream>
#include <sstream>

#include <tessel/FFDC.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThread.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"
#include "internal/StandardStreams.h"

namespace tessel {
namespace {

const RasDescriptor rd("EventLog", internal::kMessages);

}  // namespace

EventLog::EventLog() = default;

EventLog::EventLog(const EventLog&) {
  const NYXException failure("EventLog copy constructor should never be called!");
  FFDC::capture(rd, "EventLog", FFDC::PROBE_001(), &failure);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): nothing is ever assigned
EventLog& EventLog::operator=(const EventLog&) {
  const NYXException failure("EventLog assignment operator should never be called!");
  FFDC::capture(rd, "operator=", FFDC::PROBE_002(), &failure);
  return *this;
}

EventLog::~EventLog() = default;

void EventLog::configNoFormat(const RasDescriptor& descriptor, const std::string& message) {
  logNoFormat(descriptor, LogLevel::CONFIG, message);
}

void EventLog::infoNoFormat(const RasDescriptor& descriptor, const std::string& message) {
  logNoFormat(descriptor, LogLevel::INFO, message);
}

void EventLog::warningNoFormat(const RasDescriptor& descriptor, const std::string& message) {
  logNoFormat(descriptor, LogLevel::WARNING, message);
}

void EventLog::errorNoFormat(const RasDescriptor& descriptor, const std::string& message) {
  logNoFormat(descriptor, LogLevel::SEVERE, message);
}

void EventLog::logNoFormat(const RasDescriptor& descriptor, const LogLevel& level, const std::string& message) {
  LogRecord record(level, LogRecordType::EVENT, message);
  record.setSourceMethodName("none");
  record.setSourceClassName(descriptor.getClassName());
  record.setThreadId(NYXThread::getCurrentThreadId());
  if (Logger* logger = descriptor.getLogger()) {
    logger->log(record);
  } else {
    std::ostringstream line;
    line << "DEBUG: " << record << '\n';
    internal::print(std::cout, line.str());
  }
  if (descriptor.isOn(TraceLevel::MODERATE)) {
    Trace::data(descriptor, TraceLevel::MODERATE, nullptr, "log", message);
  }
}

}  // namespace tessel
