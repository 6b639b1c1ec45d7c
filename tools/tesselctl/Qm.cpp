#include <memory>
#include <stdexcept>
#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>
#include <tessel/VXBiface.h>

#include "Commands.h"
#include "Output.h"

namespace tesselctl {
namespace {

using tessel::NYXUtils;

// The exit codes tell the step.
constexpr int kNotLoaded = 3;
constexpr int kNotConnected = 4;
constexpr int kNotDisconnected = 5;

struct Options {
  std::string name;
  std::string root;
};

// What the middleware answered. A step that was done with a warning was done: a connection exists and must be given up.
struct Codes {
  static constexpr long kSuccess = 0;
  static constexpr long kWarning = 1;

  long completion = kSuccess;
  long reason = 0;

  bool failed() const { return completion != kSuccess && completion != kWarning; }
  void print(const std::string& step) const {
    printLine(step + ": completion code " + std::to_string(completion) + ", reason " + std::to_string(reason));
  }
};

int run(const Options& options) {
  const std::string root = options.root.empty() ? NYXUtils::getKTBProdRoot() : options.root;
  const std::unique_ptr<tessel::VXBiface> queues(tessel::VXBiface::newInstance());
  try {
    if (!root.empty()) NYXUtils::addBinDirToPath(root);
    queues->initialize(root);
  } catch (const tessel::NYXException& exception) {
    printError(exception.getMessage());
    return kNotLoaded;
  }
  Codes connect;
  Codes disconnect;
  queues->connect(options.name, &connect.completion, &connect.reason);
  if (!connect.failed()) queues->disconnect(&disconnect.completion, &disconnect.reason);
  // Only now: where nothing can be printed no connection is left behind.
  connect.print("connect");
  if (connect.failed()) return kNotConnected;
  disconnect.print("disconnect");
  return disconnect.failed() ? kNotDisconnected : 0;
}

}  // namespace

void addQm(CLI::App& app, Command& chosen) {
  CLI::App* command =
      app.add_subcommand("qm", "Connect to a queue manager and disconnect again, to see whether it can be reached.");
  const auto options = std::make_shared<Options>();
  command->add_option("NAME", options->name, "The queue manager")->required();
  command->add_option("--root", options->root,
                      "The product root beside which the messaging client is installed, in bin64; unless given "
                      "KTB_PROD, else NYX_PROD,\n"
                      "else the product that this tool lies in");
  command->footer(
      "Prints the completion code and the reason of both steps as the messaging client answers them. Exit codes: 0\n"
      "both steps done, maybe with a warning (completion code 1), 2 wrong usage, 3 the client library cannot be "
      "loaded,\n"
      "4 not connected, 5 not disconnected.");
  command->callback([options, &chosen] { chosen = [options] { return run(*options); }; });
}

}  // namespace tesselctl
