#include <memory>
#include <string>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "Commands.h"
#include "Output.h"

namespace tesselctl {
namespace {

using tessel::NYXUtils;

struct Options {
  std::vector<std::string> paths;
  bool groupWrite = false;
  bool everyoneRead = false;
  bool everyoneWrite = false;
};

void secure(const std::string& path, const Options& options) {
  if (options.groupWrite) {
    NYXUtils::mkGroupOmniWrite(path, options.everyoneWrite);
  } else {
    NYXUtils::mkpriv(path, options.everyoneRead, options.everyoneWrite);
  }
}

int run(const Options& options) {
  int code = 0;
  for (const std::string& path : options.paths) {
    try {
      secure(path, options);
      printLine("secured: " + path);
    } catch (const tessel::NYXException& exception) {
      printError(exception.getMessage());
      code = 1;
    }
  }
  return code;
}

}  // namespace

void addSecure(CLI::App& group, Command& chosen) {
  CLI::App* command = group.add_subcommand(
      "secure", "Leave access to files and directories to the current user and the Administrators.");
  const auto options = std::make_shared<Options>();
  command->add_option("PATH", options->paths, "Files and directories; what lies in a directory is not visited")
      ->required();
  command->add_flag("--group-write", options->groupWrite,
                    "The group omni may do everything, too, and Everyone may read");
  command->add_flag("--everyone-read", options->everyoneRead, "Everyone may read");
  command->add_flag("--everyone-write", options->everyoneWrite,
                    "Everyone may write, delete, and change the access list itself");
  command->footer(
      "The access list is replaced: whom it does not name has no access, the system's own account included. A path\n"
      "that cannot be secured is reported on standard error, the next one is taken, and the exit code is 1.");
  command->callback([options, &chosen] { chosen = [options] { return run(*options); }; });
}

}  // namespace tesselctl
