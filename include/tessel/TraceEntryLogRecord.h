/// @file
#pragma once

#include <tessel/LogRecord.h>

namespace tessel {

/// A trace record of type ENTRY; its text shows the method and its arguments in brackets.
class TESSEL_API TraceEntryLogRecord : public LogRecord {
 public:
  /// @param message the indentation prefix that stands before the method.
  TraceEntryLogRecord(const LogLevel& level, const std::string& message);
  TraceEntryLogRecord(const TraceEntryLogRecord& other);
  ~TraceEntryLogRecord() override;

  std::string getMessage() const override;

 private:
  void appendMessage(std::string& text) const override;
};

}  // namespace tessel
