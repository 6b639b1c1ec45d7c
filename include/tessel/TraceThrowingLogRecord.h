/// @file
#pragma once

#include <tessel/LogRecord.h>

namespace tessel {

/// A trace record of type THROWING; its text shows the method, the exception and its class.
class TESSEL_API TraceThrowingLogRecord : public LogRecord {
 public:
  /// @param message the indentation prefix that stands before the method.
  TraceThrowingLogRecord(const LogLevel& level, const std::string& message);
  TraceThrowingLogRecord(const TraceThrowingLogRecord& other);
  ~TraceThrowingLogRecord() override;

  std::string getMessage() const override;

 private:
  void appendMessage(std::string& text) const override;
};

}  // namespace tessel
