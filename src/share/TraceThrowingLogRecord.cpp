#include <tessel/TraceThrowingLogRecord.h>

#include <tessel/NYXException.h>

#include "internal/TypeName.h"

namespace tessel {

TraceThrowingLogRecord::TraceThrowingLogRecord(const LogLevel& level, const std::string& message)
    : LogRecord(level, LogRecordType::THROWING, message) {}

TraceThrowingLogRecord::TraceThrowingLogRecord(const TraceThrowingLogRecord& other) = default;

TraceThrowingLogRecord::~TraceThrowingLogRecord() = default;

std::string TraceThrowingLogRecord::getMessage() const {
  std::string text;
  appendMessage(text);
  return text;
}

void TraceThrowingLogRecord::appendMessage(std::string& text) const {
  const NYXException* thrown = getThrown();
  appendMethod(text);
  text += ", ";
  text += thrown ? thrown->toString() : "Unknown Throwable";
  text += '[';
  text += thrown ? internal::classText(typeid(*thrown)) : "Throwable";
  text += ']';
}

}  // namespace tessel
