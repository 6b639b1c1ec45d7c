#include <tessel/TraceThrowingLogRecord.h>

#include <tessel/NYXException.h>

#include "internal/TypeName.h"

namespace tessel {

TraceThrowingLogRecord::TraceThrowingLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::THROWING, message) {}

TraceThrowingLogRecord::TraceThrowingLogRecord(const TraceThrowingLogRecord& other) = default;

TraceThrowingLogRecord::~TraceThrowingLogRecord() = default;

std::string TraceThrowingLogRecord::getMessage() const {
  const NYXException* thrown = getThrown();
  const std::string text = thrown ? thrown->toString() : "Unknown Throwable";
  const std::string type = thrown ? internal::classText(typeid(*thrown)) : "Throwable";
  return LogRecord::getMessage() + " " + getSourceMethodName() + ", " + text + "[" + type + "]";
}

}  // namespace tessel
