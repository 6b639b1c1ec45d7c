#include <tessel/TraceExitLogRecord.h>

namespace tessel {

TraceExitLogRecord::TraceExitLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::EXIT, message) {}

TraceExitLogRecord::TraceExitLogRecord(const TraceExitLogRecord& other) = default;

TraceExitLogRecord::~TraceExitLogRecord() = default;

std::string TraceExitLogRecord::getMessage() const {
  std::string text = LogRecord::getMessage() + " " + getSourceMethodName();
  if (getNumArguments() > 0) text += " returns [" + getArgument(0) + "] " + getMethodReturnType();
  return text;
}

}  // namespace tessel
