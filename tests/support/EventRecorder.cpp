#include "support/EventRecorder.h"

#include <algorithm>

#include <tessel/LogRecord.h>
#include <tessel/Logger.h>
#include <tessel/RAS.h>

namespace tessel::test {
namespace {

bool matches(const std::string& event, const std::string& text) {
  if (text.empty() || text.back() != '*') return event == text;
  return event.compare(0, text.size() - 1, text, 0, text.size() - 1) == 0;
}

bool isEvent(const LogRecord& record) {
  const LogRecordType& type = record.getType();
  return type == LogRecordType::EVENT;
}

}  // namespace

EventRecorder::EventRecorder() : LogHandler(LogLevel::ALL) { Logger::getLogger("")->addHandler(*this); }

EventRecorder::~EventRecorder() { Logger::getLogger("")->removeHandler(*this); }

void EventRecorder::publish(LogRecord& record) {
  const std::lock_guard guard(mutex_);
  if (isEvent(record)) {
    events_.push_back(record.getMessage());
    if (record.getLogLevel() >= LogLevel::SEVERE) errors_.push_back(record.getMessage());
  } else if (record.getType() == LogRecordType::DATA) {
    points_.push_back({record.getArgument(0), record.getArgument(1), record.getLogLevel().getValue()});
  }
  changed_.notify_all();
}

int EventRecorder::count(const std::string& text) const {
  const std::lock_guard guard(mutex_);
  return static_cast<int>(
      std::count_if(events_.begin(), events_.end(), [&](const auto& event) { return matches(event, text); }));
}

bool EventRecorder::waitFor(const std::string& text, int times) {
  std::unique_lock guard(mutex_);
  return changed_.wait_for(guard, kWatchdog, [&] {
    return std::count_if(events_.begin(), events_.end(), [&](const auto& event) { return matches(event, text); }) >=
           times;
  });
}

std::vector<std::string> EventRecorder::errors() const {
  const std::lock_guard guard(mutex_);
  return errors_;
}

int EventRecorder::traced(const std::string& argument) const {
  const std::lock_guard guard(mutex_);
  return static_cast<int>(
      std::count_if(points_.begin(), points_.end(), [&](const Point& point) { return point.argument == argument; }));
}

bool EventRecorder::waitForTraced(const std::string& argument, int times) {
  std::unique_lock guard(mutex_);
  return changed_.wait_for(guard, kWatchdog, [&] {
    return std::count_if(points_.begin(), points_.end(),
                         [&](const Point& point) { return point.argument == argument; }) >= times;
  });
}

std::string EventRecorder::tracedValue(const std::string& argument) const {
  const std::lock_guard guard(mutex_);
  const Point* last = lastPoint(argument);
  return last ? last->value : std::string();
}

int EventRecorder::tracedLevel(const std::string& argument) const {
  const std::lock_guard guard(mutex_);
  const Point* last = lastPoint(argument);
  return last ? last->level : -1;
}

const EventRecorder::Point* EventRecorder::lastPoint(const std::string& argument) const {
  const auto last =
      std::find_if(points_.rbegin(), points_.rend(), [&](const Point& point) { return point.argument == argument; });
  return last == points_.rend() ? nullptr : &*last;
}

Tracing::Tracing(const std::string& classNames) { RAS::setLevel(classNames + "=ALL"); }

Tracing::~Tracing() { RAS::setLevel(std::string()); }

}  // namespace tessel::test
