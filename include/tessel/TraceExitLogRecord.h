/// @file
#pragma once

#include <tessel/LogRecord.h>

namespace tessel {

/// A trace record of type EXIT; its text shows the method and what it returns.
class TESSEL_API TraceExitLogRecord : public LogRecord {
 public:
  /// @param message the indentation prefix that stands before the method.
  TraceExitLogRecord(const LogLevel& level, const std::string& message);
  TraceExitLogRecord(const TraceExitLogRecord& other);
  ~TraceExitLogRecord() override;

  std::string getMessage() const override;

 private:
  void appendMessage(std::string& text) const override;
};

}  // namespace tessel
