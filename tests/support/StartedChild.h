// A second process that lives beside the test.
#pragma once

#include <windows.h>

#include <string>

namespace tessel::test {

// Runs a registered child body; see ChildRegistration. Its argument reaches the child through the environment.
class StartedChild {
 public:
  StartedChild(const std::string& body, const std::string& argument);
  // Kills the child when it still runs.
  ~StartedChild();
  StartedChild(const StartedChild&) = delete;
  StartedChild& operator=(const StartedChild&) = delete;

  // Waits for the end, at most as long as the watchdog. Returns the exit code, 259 when there was no end.
  unsigned long exitCode();

  // Returns when the process is gone.
  void kill();

  // In the child: the argument.
  static std::string argument();

 private:
  HANDLE process_ = nullptr;
};

}  // namespace tessel::test
