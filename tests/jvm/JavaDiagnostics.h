// The diagnostics of a Java process, for a test.
#pragma once

#include <string>
#include <vector>

#include <tessel/RAS.h>

#include "jvm/Jvm.h"
#include "support/Diagnostics.h"

namespace tessel::test {

inline const std::string kPrefix = "com.kelvo.tessel.nativ";

// Initialised as long as it lives, with the captures in the log directory that all tests of the program share.
class JavaDiagnostics {
 public:
  // @param specification of the trace; empty for none.
  explicit JavaDiagnostics(const std::string& specification = "") {
    std::filesystem::remove_all(Diagnostics::captureFolder());
    RAS::initialize(RASEnvironment::JAVA_APP, &Jvm::instance().env(), logDirectory().string(), kPrefix);
    if (!specification.empty()) RAS::setLevel(specification);
  }
  ~JavaDiagnostics() { RAS::shutdown(); }
  JavaDiagnostics(const JavaDiagnostics&) = delete;
  JavaDiagnostics& operator=(const JavaDiagnostics&) = delete;

  // The value behind a label such as "Arg[0]:" in each capture file.
  static std::vector<std::string> captured(const std::string& label) {
    constexpr std::size_t kValueColumn = 12;
    std::vector<std::string> values;
    for (const std::vector<std::string>& capture : Diagnostics::captures()) {
      for (const std::string& line : capture) {
        if (line.compare(0, label.size(), label) == 0) values.push_back(line.substr(kValueColumn));
      }
    }
    return values;
  }
};

}  // namespace tessel::test
