#include <tessel/TraceEntryLogRecord.h>

namespace tessel {

TraceEntryLogRecord::TraceEntryLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::ENTRY, message) {}

TraceEntryLogRecord::TraceEntryLogRecord(const TraceEntryLogRecord& other) = default;

TraceEntryLogRecord::~TraceEntryLogRecord() = default;

std::string TraceEntryLogRecord::getMessage() const {
  std::string text;
  appendMessage(text);
  return text;
}

void TraceEntryLogRecord::appendMessage(std::string& text) const {
  appendMethod(text);
  text += ' ';
  appendArguments(text);
}

}  // namespace tessel
