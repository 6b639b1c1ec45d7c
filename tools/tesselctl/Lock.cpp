#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <tessel/FileLock.h>

#include "Commands.h"
#include "Output.h"
#include "Process.h"

namespace tesselctl {
namespace {

// That of a temporary failure: told apart from the exit codes that commands use.
constexpr int kHeld = 75;

struct Options {
  std::string file;
  bool shared = false;
  bool writePid = false;
  std::vector<std::string> command;
};

// ", by process 1234" when the holder has said so.
std::string holder(const std::string& file) {
  const std::string ending = ".lck";
  std::string number;
  if (file.ends_with(ending)) std::ifstream(file.substr(0, file.size() - ending.size()) + ".pid") >> number;
  return number.empty() ? number : ", by process " + number;
}

int run(const Options& options) {
  const std::unique_ptr<tessel::FileLock> lock(
      tessel::FileLock::newInstanceIfFree(options.file, options.shared, options.writePid));
  if (lock) return runProgram(options.command);
  printError("the lock '" + options.file + "' is held already" + holder(options.file));
  return kHeld;
}

}  // namespace

void addLock(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("lock", "Run a command while holding a lock between processes.");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE", options->file, "Lock file, by convention ending in .lck; created when it is missing")
      ->required();
  CLI::Option* shared = command->add_flag("--shared", options->shared, "Let other shared holders in");
  command
      ->add_flag("--pid", options->writePid,
                 "Write the number of the locking process to the file of the same name that ends in .pid")
      ->excludes(shared);
  command->add_option("COMMAND", options->command, "Program and its arguments, behind --")->required();
  command->footer(
      "The lock is not waited for. The exit code is that of the command; 75 when the lock is held already, 1 when it\n"
      "cannot be taken otherwise or the command cannot be started.");
  command->callback([options, &chosen] { chosen = [options] { return run(*options); }; });
}

}  // namespace tesselctl
