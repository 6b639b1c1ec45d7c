#include <memory>
#include <string>
#include <vector>

#include <tessel/FilePermissionsException.h>
#include <tessel/NYXUtils.h>

#include "Commands.h"
#include "Output.h"

namespace tesselctl {
namespace {

int run(const std::vector<std::string>& paths) {
  int code = 0;
  for (const std::string& path : paths) {
    try {
      tessel::NYXUtils::checkFilePermissions(path);
      printLine("protected: " + path);
    } catch (const tessel::FilePermissionsException& exception) {
      printError(exception.getMessage());
      code = 1;
    }
  }
  return code;
}

}  // namespace

void addCheck(CLI::App& group, Command& chosen) {
  CLI::App* command =
      group.add_subcommand("check", "Check that files are not open to the groups Guests, Users and Everyone.");
  const auto paths = std::make_shared<std::vector<std::string>>();
  command->add_option("PATH", *paths, "Files and directories; what lies in a directory is not visited")->required();
  command->footer(
      "A path that is open, or whose access list cannot be read, is reported on standard error with the reason, and\n"
      "the exit code is 1. Other groups are not looked at, however many users they have.");
  command->callback([paths, &chosen] { chosen = [paths] { return run(*paths); }; });
}

}  // namespace tesselctl
