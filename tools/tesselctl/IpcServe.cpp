#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <tessel/IPCListener.h>
#include <tessel/IPCServer.h>
#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>
#include <tessel/ProcessSignalActionHandler.h>

#include "Commands.h"
#include "Diagnostics.h"
#include "Output.h"
#include "System.h"
#include "Transformation.h"

namespace tesselctl {
namespace {

struct Options {
  std::string service;
  std::string transformation = "upper";
  std::int64_t count = 0;
  int maxConnections = -1;
  bool untilEof = false;
  DiagnosticsOptions diagnostics;
};

// The wish to stop, from a signal, the end of the input or the last request.
class Stop : public tessel::ProcessSignalActionHandler {
 public:
  void action(int signal) override {
    defaultAction(signal);
    request();
  }

  void request() {
    const std::lock_guard guard(mutex_);
    requested_ = true;
    changed_.notify_all();
  }

  void wait() {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [this] { return requested_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool requested_ = false;  // guarded by mutex_
};

// Answers at most `limit` requests, 0 for no limit, and then asks for the stop. Called from several threads at once.
class Answers : public tessel::IPCListener {
 public:
  Answers(Transformation transformation, std::int64_t limit, Stop& stop)
      : transformation_(transformation), limit_(limit), stop_(stop) {}

  tessel::IPCMessage onMessage(const tessel::IPCMessage& request) override {
    countClient();
    const std::int64_t number = ++requests_;
    if (limit_ != 0 && number > limit_) {
      --requests_;
      throw tessel::NYXException("the service stops after " + std::to_string(limit_) + " requests");
    }
    // Nothing is lost: stopping waits for every request that is being answered.
    if (number == limit_) stop_.request();
    return {request.getMessageId(), transformation_(request.getMessageText())};
  }

  std::string summary() const {
    return "requests: " + std::to_string(requests_) + ", clients: " + std::to_string(clients_);
  }

 private:
  // Each client is served on a thread of its own.
  void countClient() {
    thread_local bool known = false;
    if (!known) ++clients_;
    known = true;
  }

  const Transformation transformation_;
  const std::int64_t limit_;
  Stop& stop_;
  std::atomic<std::int64_t> requests_ = 0;
  std::atomic<std::int64_t> clients_ = 0;
};

int serve(const Options& options) {
  const Diagnostics diagnostics(options.diagnostics, "ipc serve " + options.service);
  // Never deleted: a signal, or the thread that waits for the end of the input, may still arrive while the process
  // ends.
  Stop& stop = *new Stop;
  Answers answers(transformations().at(options.transformation), options.count, stop);
  const std::unique_ptr<tessel::IPCServer> server(
      tessel::IPCServer::newInstance(options.service, answers, options.maxConnections));
  server->connect();
  tessel::NYXUtils::handleSignals(&stop);
  if (options.untilEof) {
    std::thread([&stop] {
      waitForEndOfInput();
      stop.request();
    }).detach();
  }
  printLine("serving " + options.service);
  stop.wait();
  server->disconnect();
  printNote(answers.summary() + '\n');
  return 0;
}

}  // namespace

void addIpcServe(CLI::App& group, Command& chosen) {
  CLI::App* command = group.add_subcommand(
      "serve", "Answer the requests sent to a local message service until interrupted or told to stop.");
  const auto options = std::make_shared<Options>();
  command->add_option("NAME", options->service, "Name of the service")->required();
  command->add_option("--transform", options->transformation, "How a request becomes its reply")
      ->check(CLI::IsMember(&transformations()))
      ->capture_default_str();
  command->add_option("--count", options->count, "Stop after this many requests, 0 for no limit")
      ->check(CLI::Range(std::int64_t{0}, std::numeric_limits<std::int64_t>::max()))
      ->capture_default_str();
  command->add_option("--max-connections", options->maxConnections, "Clients served at once; without it any number")
      ->check(CLI::Range(1, std::numeric_limits<int>::max()));
  command->add_flag("--until-eof", options->untilEof, "Stop at the end of standard input");
  addDiagnosticsOptions(*command, options->diagnostics);
  command->footer(
      "Prints \"serving NAME\" on standard output when clients can connect, and a summary on standard error\n"
      "when it has stopped. Requests in progress are answered before it stops. With --log-dir the server's events go\n"
      "to the event log there instead of standard error.");
  command->callback([options, &chosen] { chosen = [options] { return serve(*options); }; });
}

}  // namespace tesselctl
