#include <tessel/TraceExitLogRecord.h>

namespace tessel {

TraceExitLogRecord::TraceExitLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::EXIT, message) {}

TraceExitLogRecord::TraceExitLogRecord(const TraceExitLogRecord& other) = default;

TraceExitLogRecord::~TraceExitLogRecord() = default;

std::string TraceExitLogRecord::getMessage() const {
  std::string text;
  appendMessage(text);
  return text;
}

void TraceExitLogRecord::appendMessage(std::string& text) const {
  appendMethod(text);
  if (getNumArguments() == 0) return;
  text += " returns [";
  text += getArgument(0);
  text += "] ";
  text += getMethodReturnType();
}

}  // namespace tessel
