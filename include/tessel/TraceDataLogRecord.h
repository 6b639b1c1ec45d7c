/// @file
#pragma once

#include <tessel/LogRecord.h>

namespace tessel {

/// A trace record of type DATA; its text shows the method, "data" and the arguments in brackets.
class TESSEL_API TraceDataLogRecord : public LogRecord {
 public:
  /// @param message the indentation prefix that stands before the method.
  TraceDataLogRecord(const LogLevel& level, const std::string& message);
  TraceDataLogRecord(const TraceDataLogRecord& other);
  ~TraceDataLogRecord() override;

  std::string getMessage() const override;

 private:
  void appendMessage(std::string& text) const override;
};

}  // namespace tessel
