#include <tessel/TraceDataLogRecord.h>

#include "internal/ArgumentText.h"

namespace tessel {

TraceDataLogRecord::TraceDataLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::DATA, message) {}

TraceDataLogRecord::TraceDataLogRecord(const TraceDataLogRecord& other) = default;

TraceDataLogRecord::~TraceDataLogRecord() = default;

std::string TraceDataLogRecord::getMessage() const {
  return LogRecord::getMessage() + " " + getSourceMethodName() + " data " + internal::bracketedArguments(*this);
}

}  // namespace tessel
