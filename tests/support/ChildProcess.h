// Parts of a test that need a process of their own.
#pragma once

#include <optional>
#include <string>

namespace tessel::test {

// What the child does; its result is the exit code.
using ChildBody = int (*)();

// Makes a body known by name. As a static object beside the test:
//   const ChildRegistration registration("throws", [] { ...; return 0; });
class ChildRegistration {
 public:
  ChildRegistration(const std::string& name, ChildBody body);
};

struct ChildResult {
  unsigned long exitCode;
  std::string standardError;
};

// Starts this program again to run the body, and waits for its end. The child never outlives this process.
ChildResult runChild(const std::string& name);

// For main: runs the body that the command line asks for; nothing when it asks for none.
std::optional<int> runAsChild(int argc, char** argv);

}  // namespace tessel::test
