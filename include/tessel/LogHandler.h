/// @file
#pragma once

#include <atomic>
#include <iosfwd>

#include <tessel/Export.h>
#include <tessel/LogLevel.h>

namespace tessel {

class LogRecord;

/// An output for log records.
///
/// publish() is called from every thread that logs, at once; a handler guards its own state. While a thread is in
/// publish() its own trace points are dropped rather than waited for, and a handler must not trace, log or format
/// while it holds a lock of its own. An exception that leaves publish() is discarded: the other handlers still get
/// the record. Belongs to whoever made it; loggers only borrow it.
class TESSEL_API LogHandler {
 public:
  /// @param level the least severe level that the handler writes.
  explicit LogHandler(const LogLevel& level);
  LogHandler(const LogHandler& other) = delete;
  LogHandler& operator=(const LogHandler& other) = delete;
  /// Remove the handler from its loggers first. Never from inside its own publish().
  virtual ~LogHandler();

  /// Writes the record if its level is at or above the handler's. @param record only for the length of the call.
  virtual void publish(LogRecord& record) = 0;

  /// @return the level given at construction.
  const LogLevel& getLogLevel() const;

 private:
  friend class Logger;

  LogLevel level_;
  std::atomic<unsigned> users_{0};  // publications under way or about to begin
};

/// Writes "Level: " and the level's padded name.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const LogHandler& handler);

}  // namespace tessel
