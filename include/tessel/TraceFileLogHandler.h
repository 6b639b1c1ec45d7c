/// @file
#pragma once

#include <memory>
#include <string>

#include <tessel/LogFileProperties.h>
#include <tessel/LogHandler.h>

namespace tessel {

class NYXException;
class NYXThreadSync;
class RasDescriptor;
class SecureFileHandler;

/// Writes trace records to the rotating trace files, one line of fixed columns each.
///
/// The file is opened by the first record that arrives. Events are not written, although they open it as well. A
/// failure never reaches the traced code: the first one is reported as an event, KTBNV0127 when the file cannot be
/// opened or KTBNV0053 when it cannot be written, and no other one follows in the handler's life. A file that could
/// not be opened is not tried again; one that could not be written is, with every record.
class TESSEL_API TraceFileLogHandler : public LogHandler {
 public:
  /// Builds the banner, which therefore shows the time of this call. @throws NYXException KTBNV0008.
  explicit TraceFileLogHandler(const LogFileProperties& properties);
  /// Releases the file.
  ~TraceFileLogHandler() override;

  void publish(LogRecord& record) override;

 private:
  // What is to be reported once the lock has been left.
  enum class Outcome { nothingToReport, notCreated, notWritten };

  std::string generateLogStartBanner() const;
  Outcome write(const LogRecord& record, std::string& reason);
  void open();
  Outcome firstFailure(Outcome outcome, const NYXException& exception, std::string& reason);
  void report(const char* key, const std::string& reason) const;

  static const RasDescriptor rd;

  const LogFileProperties properties_;
  const std::string banner_;
  const std::unique_ptr<NYXThreadSync> sync_;
  std::unique_ptr<SecureFileHandler> file_;  // guarded by sync_; null before the first record and when it failed
  std::string line_;                         // guarded by sync_; kept, so that a record costs no allocation
  bool errorReported_ = false;               // guarded by sync_
  bool busy_ = false;                        // guarded by sync_; the file is at work for the lock's holder
};

}  // namespace tessel
