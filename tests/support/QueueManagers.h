// The stand-in for the messaging middleware, scripted for a test.
#pragma once

#include <string>
#include <vector>

#include <tessel/NYXUtils.h>

#include "support/Files.h"
#include "support/TempFolder.h"

namespace tessel::test {

// An installation: "complete", "with-dependency", "without-connect" or "without-disconnect". The root is that of the
// product beside it.
inline std::string productBeside(const std::string& variant) {
  return TESSEL_QUEUE_MANAGERS "/" + variant + "/product";
}

// The path as the library builds it.
inline std::string libraryBeside(const std::string& variant) { return productBeside(variant) + "\\..\\bin64\\omni"; }

// Sets what the stand-in answers and records its calls for as long as it lives.
class QueueManagerScript {
 public:
  QueueManagerScript() { NYXUtils::setenv("TESSEL_QM_LOG", log().string()); }
  ~QueueManagerScript() {
    for (const char* name : {"TESSEL_QM_LOG", "TESSEL_QM_CONNECT", "TESSEL_QM_DISCONNECT", "TESSEL_QM_DELAY"}) {
      NYXUtils::setenv(name, "");
    }
  }
  QueueManagerScript(const QueueManagerScript&) = delete;
  QueueManagerScript& operator=(const QueueManagerScript&) = delete;

  static void answerConnect(const std::string& codes) { NYXUtils::setenv("TESSEL_QM_CONNECT", codes); }
  static void answerDisconnect(const std::string& codes) { NYXUtils::setenv("TESSEL_QM_DISCONNECT", codes); }
  static void delay(int milliseconds) { NYXUtils::setenv("TESSEL_QM_DELAY", std::to_string(milliseconds)); }

  std::vector<std::string> calls() const { return windowsLines(bytesOf(log())); }

 private:
  std::filesystem::path log() const { return folder_.path() / "calls"; }

  TempFolder folder_;
};

}  // namespace tessel::test
