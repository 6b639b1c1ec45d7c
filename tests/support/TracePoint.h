// A call at a moment that only trace shows.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include <tessel/LogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>

namespace tessel::test {

// Called at every record of that kind which a method of the class sends, on the thread that sends it and under the
// trace lock.
class TracePoint : public LogHandler {
 public:
  TracePoint(const std::string& className, std::string method, LogRecordType type, std::function<void()> call)
      : LogHandler(LogLevel::ALL),
        logger_(*Logger::getLogger(className)),
        method_(std::move(method)),
        type_(type),
        call_(std::move(call)) {
    logger_.addHandler(*this);
  }
  ~TracePoint() override { logger_.removeHandler(*this); }
  TracePoint(const TracePoint&) = delete;
  TracePoint& operator=(const TracePoint&) = delete;

  void publish(LogRecord& record) override {
    if (record.getSourceMethodName() == method_ && record.getType() == type_) call_();
  }

 private:
  Logger& logger_;
  std::string method_;
  LogRecordType type_;
  std::function<void()> call_;
};

}  // namespace tessel::test
