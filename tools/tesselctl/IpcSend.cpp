#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include <tessel/IPCClient.h>
#include <tessel/IPCMessage.h>
#include <tessel/NYXException.h>
#include <tessel/NativeProperties.h>

#include "Commands.h"
#include "Diagnostics.h"
#include "LineReader.h"
#include "Output.h"
#include "Progress.h"
#include "Summary.h"

namespace tesselctl {
namespace {

using tessel::IPCMessage;

struct Options {
  std::string service;
  std::string file = "-";
  long interval = 1;
  bool truncate = false;
  bool quiet = false;
  DiagnosticsOptions diagnostics;
};

// Connected for as long as it exists.
class Connection {
 public:
  explicit Connection(const std::string& service)
      : client_(tessel::IPCClient::newInstance(service, tessel::NativeProperties())) {
    client_->connect();
  }
  ~Connection() { client_->disconnect(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  IPCMessage exchange(const IPCMessage& request, long interval) { return client_->sendMessage(request, interval); }

 private:
  std::unique_ptr<tessel::IPCClient> client_;
};

// One line after the other. A line that fails is reported and the next one is sent; a lost connection ends the run.
class Sender {
 public:
  explicit Sender(const Options& options)
      : options_(options), input_(options.file), connection_(options.service), progress_(!options.quiet) {}

  int run() {
    try {
      for (std::string line; input_.next(line);) {
        send(line);
        progress_.show(input_.portion(), input_.lineNumber());
      }
    } catch (const tessel::NYXException& exception) {
      fail(exception.getMessage());
    } catch (const std::exception& exception) {
      fail(exception.what());
    }
    progress_.hide();
    if (!options_.quiet) printNote(summary_.text() + '\n');
    return summary_.failures() == 0 ? 0 : 1;
  }

 private:
  void send(std::string& line) {
    if (line.size() > IPCMessage::MAX_MESSAGE_TEXT_LEN) {
      if (!options_.truncate) {
        fail("the line has " + std::to_string(line.size()) + " bytes, and a request holds at most " +
             std::to_string(IPCMessage::MAX_MESSAGE_TEXT_LEN));
        return;
      }
      line.resize(IPCMessage::MAX_MESSAGE_TEXT_LEN);
    }
    const IPCMessage request(requestId(), line);
    const auto start = std::chrono::steady_clock::now();
    const IPCMessage reply = connection_.exchange(request, options_.interval);
    const auto end = std::chrono::steady_clock::now();
    checkId(request, reply);
    summary_.addExchange(line.size(), reply.getMessageText().size(), end - start);
    show(reply);
  }

  void show(const IPCMessage& reply) {
    const long status = reply.getMessageStatus();
    if (status == IPCMessage::MessageStatus::SUCCESS || status == IPCMessage::MessageStatus::WARNING) {
      progress_.makeRoomForOutput();
      printLine(reply.getMessageText());
    } else {
      fail("status " + std::to_string(status) + ": " + reply.getMessageText());
    }
  }

  // Never negative: a lost connection shows as the id -1.
  long requestId() const { return static_cast<long>(input_.lineNumber() & 0x7fffffff); }

  void checkId(const IPCMessage& request, const IPCMessage& reply) const {
    if (reply.getMessageId() == request.getMessageId()) return;
    if (reply.getMessageId() == IPCMessage().getMessageId()) {
      throw std::runtime_error("the service '" + options_.service + "' closed the connection");
    }
    throw std::runtime_error("the service '" + options_.service + "' answered another request: id " +
                             std::to_string(reply.getMessageId()));
  }

  void fail(const std::string& text) {
    progress_.hide();
    printError(input_.place() + ": " + text);
    summary_.addFailure();
  }

  const Options& options_;
  LineReader input_;
  Connection connection_;
  Progress progress_;
  Summary summary_;
};

int send(const Options& options) {
  const Diagnostics diagnostics(options.diagnostics, "ipc send " + options.service);
  return Sender(options).run();
}

}  // namespace

void addIpcSend(CLI::App& group, Command& chosen) {
  CLI::App* command = group.add_subcommand(
      "send", "Send each line of a file as a request to a local message service and print the replies.");
  const auto options = std::make_shared<Options>();
  command->add_option("NAME", options->service, "Name of the service")->required();
  command->add_option("FILE", options->file, "File to read, - for standard input")->capture_default_str();
  command->add_option("--interval", options->interval, "Milliseconds between two looks for a late reply")
      ->check(CLI::Range(0L, std::numeric_limits<long>::max()))
      ->capture_default_str();
  command->add_flag("--truncate", options->truncate, "Cut lines after 1024 bytes instead of refusing longer ones");
  command->add_flag("--quiet", options->quiet, "Show neither progress nor summary");
  addDiagnosticsOptions(*command, options->diagnostics);
  command->footer(
      "Replies go to standard output, a line each. A line that is too long or is answered with an error is reported\n"
      "on standard error, the next one is sent, and the exit code is 1. The summary counts the bytes of the texts.");
  command->callback([options, &chosen] { chosen = [options] { return send(*options); }; });
}

}  // namespace tesselctl
