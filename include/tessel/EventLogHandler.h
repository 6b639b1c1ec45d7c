/// @file
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include <tessel/LogFileProperties.h>
#include <tessel/LogHandler.h>

namespace tessel {

class NYXException;
class RasDescriptor;
class SecureFileHandler;

/// Writes events from CONFIG up to the rotating files of the event log, or to standard error when that fails.
///
/// The banner stands at the top of what this handler writes; a file that rotation begins has none. An event that is
/// raised while its own thread opens, rotates or secures a log file goes to standard error, too.
class TESSEL_API EventLogHandler : public LogHandler {
 public:
  /// Opens the file and writes the banner. When that fails KTBNV0126 goes to standard error, and so does each later
  /// event.
  explicit EventLogHandler(const LogFileProperties& properties);
  /// Releases the file.
  ~EventLogHandler() override;

  /// A failure to write is reported once in the handler's life, as KTBNV0052 on standard error; the event follows
  /// there each time, and the next one tries the file again.
  void publish(LogRecord& record) override;

 private:
  std::string generateLogStartBanner() const;
  void handlePublishError(const LogRecord& record, const std::string& directory, const NYXException& exception);

  static const RasDescriptor rd;

  const LogFileProperties properties_;
  std::unique_ptr<SecureFileHandler> file_;  // null when it could not be opened
  std::atomic<bool> publishErrorReported_{false};
};

}  // namespace tessel
