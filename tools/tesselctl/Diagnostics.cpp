#include "Diagnostics.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include <tessel/LogFileProperties.h>
#include <tessel/NYXEnvironment.h>
#include <tessel/NYXPropConstant.h>
#include <tessel/NativeProperties.h>
#include <tessel/RAS.h>

namespace tesselctl {
namespace {

using tessel::LogFileProperties;
using tessel::NativeProperties;
using tessel::NativePropertyItem;
using tessel::NYXPropConstant;

constexpr const char* kPrefix = "com.kelvo.tessel.nativ";

// A file cannot be larger than its limit can say.
int bytes(int megabytes) {
  constexpr std::int64_t kMegabyte = 1 << 20;
  return static_cast<int>(std::min<std::int64_t>(megabytes * kMegabyte, std::numeric_limits<int>::max()));
}

// Both files continue what they hold, and only the user and the administrators may read them.
LogFileProperties filesOf(const std::string& pattern, const NativeProperties& properties,
                          const NativePropertyItem& size, const NativePropertyItem& count) {
  const int megabytes = properties.getPropertyAsInteger(size);
  const int files = properties.getPropertyAsInteger(count);
  LogFileProperties result(pattern, bytes(megabytes), files, true, false);
  result.addApplicationProperty(size.getKey(), std::to_string(megabytes));
  result.addApplicationProperty(count.getKey(), std::to_string(files));
  return result;
}

}  // namespace

void addDiagnosticsOptions(CLI::App& command, DiagnosticsOptions& options) {
  CLI::Option* directory = command.add_option("--log-dir", options.logDirectory,
                                              "Folder for event log, trace and failure captures; made when missing");
  command.add_option("--trace", options.trace, "Trace specification, such as =ALL; see docs/diagnostics.md")
      ->needs(directory)
      ->each([&options](const std::string&) { options.hasTrace = true; });
  command
      .add_option("--properties", options.propertiesFile,
                  "File with outputLogFiles, outputLogSize, traceFiles, traceSize and trace")
      ->needs(directory);
}

Diagnostics::Diagnostics(const DiagnosticsOptions& options, const std::string& command) {
  if (options.logDirectory.empty()) return;
  NativeProperties properties;
  if (!options.propertiesFile.empty()) properties.loadProperties(options.propertiesFile);
  const NYXPropConstant& keys = NYXPropConstant::getInstance();
  LogFileProperties events =
      filesOf(options.logDirectory + "/output%g.log", properties, keys.outputLogSize, keys.outputLogFiles);
  LogFileProperties trace = filesOf(options.logDirectory + "/trace%g.log", properties, keys.traceSize, keys.traceFiles);
  const std::string specification = options.hasTrace ? options.trace : properties.getPropertyAsString(keys.trace);
  for (LogFileProperties* files : {&events, &trace}) {
    files->addApplicationProperty("command", command);
    files->addApplicationProperty("trace", specification);
  }
  tessel::NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", options.logDirectory);
  tessel::RAS::initialize(tessel::RASEnvironment::DAEMON, events, trace, kPrefix);
  if (!specification.empty()) tessel::RAS::setLevel(specification);
}

Diagnostics::~Diagnostics() { tessel::RAS::shutdown(); }

}  // namespace tesselctl
