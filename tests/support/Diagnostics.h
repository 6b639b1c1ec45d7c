// The diagnostics with real files, for a test.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <tessel/LogFileProperties.h>
#include <tessel/NYXEnvironment.h>
#include <tessel/RAS.h>

#include "support/Captures.h"
#include "support/Files.h"
#include "support/TempFolder.h"

namespace tessel::test {

// The log directory can be set once in a process: all tests of a program share this one.
inline const std::filesystem::path& logDirectory() {
  static const TempFolder folder;
  static const bool set = [] {
    NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", folder.path().string());
    return true;
  }();
  static_cast<void>(set);
  return folder.path();
}

struct DiagnosticsOptions {
  RASEnvironment environment = RASEnvironment::DAEMON;
  std::string prefix;
  int eventLimit = 1 << 20;
  int traceLimit = 1 << 20;
  int count = 3;
};

// Initialised for as long as it lives, with files in a folder of its own.
class Diagnostics {
 public:
  explicit Diagnostics(const DiagnosticsOptions& options = DiagnosticsOptions()) : options_(options) {
    std::filesystem::remove_all(captureFolder());
    initialize();
  }
  ~Diagnostics() { RAS::shutdown(); }
  Diagnostics(const Diagnostics&) = delete;
  Diagnostics& operator=(const Diagnostics&) = delete;

  // Again, as a process could.
  void initialize() const {
    logDirectory();
    RAS::initialize(options_.environment, properties("event", options_.eventLimit),
                    properties("trace", options_.traceLimit), options_.prefix);
  }

  LogFileProperties properties(const std::string& name, int limit) const {
    return {(folder() / (name + "%g.log")).string(), limit, options_.count, true, false};
  }

  const std::filesystem::path& folder() const { return folder_.path(); }
  std::filesystem::path eventFile(int generation = 0) const { return file("event", generation); }
  std::filesystem::path traceFile(int generation = 0) const { return file("trace", generation); }

  // What stands below the banner.
  std::vector<std::string> events() const { return below(eventFile(), 5); }
  std::vector<std::string> traceLines() const { return below(traceFile(), 9); }

  static std::filesystem::path captureFolder() { return logDirectory() / "ffdc"; }

  // The lines of each capture file, in the order of their names.
  static std::vector<std::vector<std::string>> captures() {
    std::vector<std::vector<std::string>> captures;
    if (!std::filesystem::is_directory(captureFolder())) return captures;
    for (const std::string& name : namesIn(captureFolder())) captures.push_back(textLines(captureFolder() / name));
    return captures;
  }

  // The lines of a file with the line ends of the platform.
  static std::vector<std::string> textLines(const std::filesystem::path& path) {
    std::ifstream file(path);
    return linesOf({std::istreambuf_iterator<char>(file), {}});
  }

 private:
  std::filesystem::path file(const std::string& name, int generation) const {
    return folder() / (name + std::to_string(generation) + ".log");
  }

  static std::vector<std::string> below(const std::filesystem::path& path, std::size_t banner) {
    std::vector<std::string> lines = windowsLines(bytesOf(path));
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(std::min(banner, lines.size())));
    return lines;
  }

  const DiagnosticsOptions options_;
  TempFolder folder_;
};

}  // namespace tessel::test
