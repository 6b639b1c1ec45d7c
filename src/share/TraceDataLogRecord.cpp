#include <tessel/TraceDataLogRecord.h>

namespace tessel {

TraceDataLogRecord::TraceDataLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::DATA, message) {}

TraceDataLogRecord::TraceDataLogRecord(const TraceDataLogRecord& other) = default;

TraceDataLogRecord::~TraceDataLogRecord() = default;

std::string TraceDataLogRecord::getMessage() const {
  std::string text;
  appendMessage(text);
  return text;
}

void TraceDataLogRecord::appendMessage(std::string& text) const {
  appendMethod(text);
  text += " data ";
  appendArguments(text);
}

}  // namespace tessel
