#include "Controller.h"

#include <iostream>
#include <utility>

namespace controller {

using tessel::EventLog;
using tessel::NYXPropConstant;

const tessel::RasDescriptor Controller::rd("Controller");

namespace {

// Lets the program write where this one does.
class Output : public tessel::ProcessStreamReaderListener {
 public:
  explicit Output(std::ostream& stream) : stream_(stream) {}
  void processOutput(const std::string& data) override { stream_ << data << std::flush; }

 private:
  std::ostream& stream_;
};

std::string text(std::chrono::seconds time) { return std::to_string(time.count()) + " seconds"; }

}  // namespace

Controller::Controller(Program program, const tessel::NativeProperties& properties)
    : program_(std::move(program)),
      count_(properties.getPropertyAsInteger(NYXPropConstant::getInstance().maxRestartCount)),
      interval_(properties.getPropertyAsInteger(NYXPropConstant::getInstance().maxRestartInterval)),
      delay_(properties.getPropertyAsInteger(NYXPropConstant::getInstance().maxRestartDelay)),
      policy_(count_, interval_, delay_) {}

bool Controller::run() {
  bool ended = true;
  while (ended && runProgram()) ended = waitBeforeRestart() || wasStopped();
  EventLog::infoNoFormat(rd, "The controller ends");
  return ended;
}

// Returns whether the program is to be started again.
bool Controller::runProgram() {
  Output output(std::cout);
  Output error(std::cerr);
  tessel::NYXProcessImpl process(program_.count(), program_.words().data());
  process.registerOutputStreamListener(output);
  process.registerErrorStreamListener(error);
  {
    const std::lock_guard guard(mutex_);
    if (stopped_) return false;
    try {
      process.start();
    } catch (const tessel::NYXException& exception) {
      EventLog::errorNoFormat(rd, exception.getMessage());
      return true;
    }
    process_ = &process;
  }
  const std::string number = std::to_string(process.getProcessId());
  EventLog::infoNoFormat(rd, "Started " + program_.name() + " as process " + number);
  const int code = process.waitForProcess();
  {
    const std::lock_guard guard(mutex_);
    process_ = nullptr;
    if (stopped_) {
      EventLog::infoNoFormat(rd, "Stopped process " + number);
      return false;
    }
  }
  const std::string ending = "Process " + number + " has ended with exit code " + std::to_string(code);
  if (code == 0) {
    EventLog::infoNoFormat(rd, ending);
    return false;
  }
  EventLog::warningNoFormat(rd, ending);
  return true;
}

// Returns whether the program may be started again.
bool Controller::waitBeforeRestart() {
  const std::string most = std::to_string(count_) + " in " + text(interval_);
  switch (policy_.decide(RestartPolicy::Clock::now())) {
    case RestartPolicy::Decision::restart:
      EventLog::infoNoFormat(rd, "Restart " + std::to_string(policy_.restarts()) + " of " + most);
      return true;
    case RestartPolicy::Decision::restartLater: {
      EventLog::warningNoFormat(rd, "There were " + most + ": the next restart is in " + text(delay_));
      std::unique_lock guard(mutex_);
      return !stopping_.wait_for(guard, delay_, [this] { return stopped_; });
    }
    case RestartPolicy::Decision::giveUp:
      break;
  }
  EventLog::errorNoFormat(rd, "There were " + most + ": giving up");
  return false;
}

void Controller::stop() {
  const std::lock_guard guard(mutex_);
  stopped_ = true;
  if (process_) process_->stop();
  stopping_.notify_all();
}

void Controller::action(int signal) {
  defaultAction(signal);
  stop();
}

bool Controller::wasStopped() {
  const std::lock_guard guard(mutex_);
  return stopped_;
}

}  // namespace controller
