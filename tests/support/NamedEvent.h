// Handshakes between the processes of a test.
#pragma once

#include <windows.h>

#include <string>

#include "support/Event.h"

namespace tessel::test {

// A name for an event that belongs to a path: backslashes separate name spaces there.
inline std::string eventName(const std::string& path) {
  std::string name = path;
  for (char& c : name) c = c == '\\' || c == '/' || c == ':' ? '-' : c;
  return name;
}

// Stays set once it was set; the same in every process that has one of that name.
class NamedEvent {
 public:
  explicit NamedEvent(const std::string& name) : event_(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {}
  ~NamedEvent() { CloseHandle(event_); }
  NamedEvent(const NamedEvent&) = delete;
  NamedEvent& operator=(const NamedEvent&) = delete;

  void set() { SetEvent(event_); }

  // Returns false when the watchdog ran out.
  bool wait() {
    const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(kWatchdog);
    return WaitForSingleObject(event_, static_cast<DWORD>(limit.count())) == WAIT_OBJECT_0;
  }

 private:
  HANDLE event_;
};

}  // namespace tessel::test
