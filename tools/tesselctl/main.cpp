// The operators' tool. Exit codes: 0 success, 1 failure at run time, 2 wrong usage.
#include <exception>
#include <string>

#include <tessel/NYXException.h>
#include <CLI/CLI.hpp>

#include "Catalogue.h"
#include "Commands.h"
#include "Output.h"
#include "System.h"
#include "internal/BuildLevel.h"

namespace {

constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

// Those that read the catalogues themselves say what is wrong with them.
int run(const tesselctl::Command& command, bool showsMessages) {
  try {
    tesselctl::findProduct();
    if (showsMessages) tesselctl::checkCatalogues();
    return command();
  } catch (const tessel::NYXException& exception) {
    tesselctl::printError(exception.getMessage());
  } catch (const std::exception& exception) {
    tesselctl::printError(exception.what());
  }
  return kFailure;
}

}  // namespace

int main(int argc, char** argv) {
  tesselctl::makeStreamsBinary();
  CLI::App app("Operators' tool of the Tessel products.", "tesselctl");
  app.set_version_flag("--version", "tesselctl " TESSEL_VERSION ", build level " + tessel::internal::buildLevel(),
                       "Print the version and the build level and exit");
  app.footer("Exit codes: 0 success, 1 failure at run time, 2 wrong usage.");
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("tesselctl: ") + error.what() + "\nRun with --help for more information.\n";
  });
  // Else a file named with a leading slash would be taken for an option.
  app.allow_windows_style_options(false);
  app.require_subcommand(1);
  tesselctl::Command command;
  CLI::App* ipc = app.add_subcommand("ipc", "Local message services over named pipes");
  ipc->require_subcommand(1);
  tesselctl::addIpcServe(*ipc, command);
  tesselctl::addIpcSend(*ipc, command);
  tesselctl::addSecure(app, command);
  tesselctl::addCheck(app, command);
  tesselctl::addAcl(app, command);
  tesselctl::addLock(app, command);
  tesselctl::addProps(app, command);
  tesselctl::addMsg(app, command);
  tesselctl::addDoctor(app, command);
  tesselctl::addQm(app, command);
  tesselctl::addRun(app, command);
  CLI::App* trace = app.add_subcommand("trace", "Trace files");
  trace->require_subcommand(1);
  tesselctl::addTraceView(*trace, command);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& outcome) {
    // Help and version arrive here, too.
    return app.exit(outcome) == 0 ? 0 : kWrongUsage;
  }
  return run(command, !app.got_subcommand("doctor") && !app.got_subcommand("msg"));
}
