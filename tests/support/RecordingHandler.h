// A log handler that keeps what it is given.
#pragma once

#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include <tessel/LogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>

namespace tessel::test {

struct Recorded {
  std::string line;
  std::string message;
  std::string className;
  std::string methodName;
  LogLevel level;
  LogRecordType type;
  const void* object;
  unsigned long threadId;
};

// Sits on one logger for as long as it lives.
class RecordingHandler : public LogHandler {
 public:
  explicit RecordingHandler(const std::string& loggerName, const LogLevel& level = LogLevel::ALL)
      : LogHandler(level), logger_(*Logger::getLogger(loggerName)) {
    logger_.addHandler(*this);
  }
  ~RecordingHandler() override { logger_.removeHandler(*this); }
  RecordingHandler(const RecordingHandler&) = delete;
  RecordingHandler& operator=(const RecordingHandler&) = delete;

  void publish(LogRecord& record) override {
    std::ostringstream line;
    line << record;
    const std::lock_guard guard(mutex_);
    records_.push_back({line.str(), record.getMessage(), record.getSourceClassName(), record.getSourceMethodName(),
                        record.getLogLevel(), record.getType(), record.getObjectReference(), record.getThreadId()});
  }

  std::vector<Recorded> records() const {
    const std::lock_guard guard(mutex_);
    return records_;
  }

  std::vector<std::string> messages() const {
    std::vector<std::string> messages;
    for (const Recorded& record : records()) messages.push_back(record.message);
    return messages;
  }

 private:
  Logger& logger_;
  mutable std::mutex mutex_;
  std::vector<Recorded> records_;  // guarded by mutex_
};

}  // namespace tessel::test
