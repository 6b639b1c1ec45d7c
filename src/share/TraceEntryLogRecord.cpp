#include <tessel/TraceEntryLogRecord.h>

#include "internal/ArgumentText.h"

namespace tessel {

TraceEntryLogRecord::TraceEntryLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::ENTRY, message) {}

TraceEntryLogRecord::TraceEntryLogRecord(const TraceEntryLogRecord& other) = default;

TraceEntryLogRecord::~TraceEntryLogRecord() = default;

std::string TraceEntryLogRecord::getMessage() const {
  return LogRecord::getMessage() + " " + getSourceMethodName() + " " + internal::bracketedArguments(*this);
}

}  // namespace tessel
