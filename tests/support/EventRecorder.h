// What the library reports while a test runs.
#pragma once

#include <string>
#include <vector>

#include <tessel/LogHandler.h>

#include "support/Event.h"

namespace tessel::test {

// Keeps the texts of all events and the arguments of all data trace points of the process, from its construction
// to its destruction.
class EventRecorder : public LogHandler {
 public:
  EventRecorder();
  ~EventRecorder() override;

  void publish(LogRecord& record) override;

  // The events of that text or, when `text` ends in '*', of texts that begin so.
  int count(const std::string& text) const;

  // Waits until there are so many of them; false when the watchdog ran out.
  bool waitFor(const std::string& text, int times = 1);

  // All events from SEVERE up, in order.
  std::vector<std::string> errors() const;

  // The data trace points whose first argument is the text. Needs trace to be on: see Tracing.
  int traced(const std::string& argument) const;
  bool waitForTraced(const std::string& argument, int times = 1);
  // The second argument of the last of them; empty when there is none.
  std::string tracedValue(const std::string& argument) const;
  // The level of the last of them; -1 when there is none.
  int tracedLevel(const std::string& argument) const;

 private:
  struct Point {
    std::string argument;
    std::string value;
    int level;
  };

  // Null when there is none. Called under the mutex.
  const Point* lastPoint(const std::string& argument) const;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> events_;  // guarded by mutex_
  std::vector<std::string> errors_;  // guarded by mutex_
  std::vector<Point> points_;        // guarded by mutex_
};

// Switches all trace points of some classes on, for its life.
class Tracing {
 public:
  explicit Tracing(const std::string& classNames);
  ~Tracing();
  Tracing(const Tracing&) = delete;
  Tracing& operator=(const Tracing&) = delete;
};

}  // namespace tessel::test
