// The diagnostics of the commands that use a message service.
#pragma once

#include <string>

#include <CLI/App.hpp>

namespace tesselctl {

struct DiagnosticsOptions {
  std::string logDirectory;
  std::string trace;
  std::string propertiesFile;
  bool hasTrace = false;
};

// The options --log-dir, --trace and --properties.
void addDiagnosticsOptions(CLI::App& command, DiagnosticsOptions& options);

// Event log, trace and failure captures in the log directory, for as long as it lives. Does nothing without one.
class Diagnostics {
 public:
  // command: shown in the banners of the files. Throws NYXException when the properties cannot be read or are wrong.
  Diagnostics(const DiagnosticsOptions& options, const std::string& command);
  ~Diagnostics();
  Diagnostics(const Diagnostics&) = delete;
  Diagnostics& operator=(const Diagnostics&) = delete;
};

}  // namespace tesselctl
