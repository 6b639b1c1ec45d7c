// Keeps a program running: starts it again when it has ended, as often as the settings of restarts allow. One
// controller at a time works in a folder, which has its lock, the number of its process and its event log. An interrupt
// or the end of standard input stops program and controller.
//
// usage: controller PROPERTIES FOLDER PROGRAM [ARGUMENT...]
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <tessel/tessel.h>

#include "Controller.h"

namespace {

constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;
constexpr int kRunsAlready = 3;
constexpr int kGaveUp = 4;

// Past the C library, whose stream would stay locked by the waiting thread when the process ends.
void waitForEndOfInput() {
  char ignored = 0;
  DWORD length = 0;
  while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), &ignored, 1, &length, nullptr) && length > 0) continue;
}

// A file cannot be larger than its limit can say.
int bytes(int megabytes) {
  constexpr std::int64_t kMegabyte = 1024 * 1024;
  return static_cast<int>(std::min<std::int64_t>(megabytes * kMegabyte, std::numeric_limits<int>::max()));
}

// The event log and the trace, which are complete when the object is gone.
class Diagnostics {
 public:
  Diagnostics(const std::string& folder, const tessel::NativeProperties& properties) {
    const tessel::NYXPropConstant& keys = tessel::NYXPropConstant::getInstance();
    const auto file = [&](const char* name, const auto& size, const auto& generations) {
      return tessel::LogFileProperties(folder + name, bytes(properties.getPropertyAsInteger(size)),
                                       properties.getPropertyAsInteger(generations), true, false);
    };
    tessel::NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", folder);
    tessel::RAS::initialize(tessel::RASEnvironment::DAEMON,
                            file("/event%g.log", keys.outputLogSize, keys.outputLogFiles),
                            file("/trace%g.log", keys.traceSize, keys.traceFiles), "");
    if (properties.contains(keys.trace)) tessel::RAS::setLevel(properties.getPropertyAsString(keys.trace));
  }
  ~Diagnostics() { tessel::RAS::shutdown(); }
  Diagnostics(const Diagnostics&) = delete;
  Diagnostics& operator=(const Diagnostics&) = delete;
};

int control(const std::string& propertiesFile, const std::string& folder, const std::vector<std::string>& command) {
  tessel::NYXUtils::mkdirs(folder, false);
  tessel::NativeProperties properties;
  properties.loadProperties(propertiesFile);
  const std::unique_ptr<tessel::FileLock> lock(
      tessel::FileLock::newInstanceIfFree(folder + "/controller.lck", false, true));
  if (!lock) {
    std::cerr << "controller: another one works in " << folder << '\n';
    return kRunsAlready;
  }
  const Diagnostics diagnostics(folder, properties);
  // Never deleted: an interrupt, or the thread that waits for the end of the input, may still come.
  auto& controller = *new controller::Controller(command, properties);
  tessel::NYXUtils::handleSignals(&controller);
  std::thread([&controller] {
    waitForEndOfInput();
    controller.stop();
  }).detach();
  const bool ended = controller.run();
  tessel::NYXUtils::handleSignals(nullptr);
  return ended ? 0 : kGaveUp;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::cerr << "usage: controller PROPERTIES FOLDER PROGRAM [ARGUMENT...]\n";
    return kWrongUsage;
  }
  try {
    return control(argv[1], argv[2], {argv + 3, argv + argc});
  } catch (const tessel::NYXException& exception) {
    std::cerr << "controller: " << exception.getMessage() << '\n';
  } catch (const std::exception& exception) {
    std::cerr << "controller: " << exception.what() << '\n';
  }
  return kFailure;
}
