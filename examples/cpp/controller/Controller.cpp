#include "Controller.h"

#include <exception>
#include <utility>

#include "Program.h"

namespace controller {

using tessel::EventLog;
using tessel::NYXPropConstant;

const tessel::RasDescriptor Controller::rd("Controller");

namespace {

// How long the last output is waited for, which children of the program may hold open.
constexpr std::chrono::seconds kDrainLimit{2};

std::string text(std::chrono::seconds time) { return std::to_string(time.count()) + " seconds"; }

}  // namespace

Controller::Controller(std::vector<std::string> command, const tessel::NativeProperties& properties)
    : command_(std::move(command)),
      count_(properties.getPropertyAsInteger(NYXPropConstant::getInstance().maxRestartCount)),
      interval_(properties.getPropertyAsInteger(NYXPropConstant::getInstance().maxRestartInterval)),
      delay_(properties.getPropertyAsInteger(NYXPropConstant::getInstance().maxRestartDelay)),
      policy_(count_, interval_, delay_) {}

bool Controller::run() {
  bool ended = true;
  while (ended && !wasStopped() && runProgram()) ended = waitBeforeRestart() || wasStopped();
  forward_.waitForEnd(kDrainLimit);
  EventLog::infoNoFormat(rd, "The controller ends");
  return ended;
}

// Returns whether the program is to be started again: one that cannot be started counts as one that has ended.
bool Controller::runProgram() {
  try {
    if (!startProgram()) return false;
  } catch (const tessel::NYXException& exception) {
    EventLog::errorNoFormat(rd, exception.getMessage());
    return true;
  } catch (const std::exception& exception) {
    EventLog::errorNoFormat(rd, exception.what());
    return true;
  }
  const std::string number = std::to_string(process_->getProcessId());
  const int code = process_->waitForProcess();
  const std::lock_guard guard(mutex_);
  process_.reset();
  if (stopped_) {
    EventLog::infoNoFormat(rd, "Stopped process " + number);
    return false;
  }
  const std::string ending = "Process " + number + " has ended with exit code " + std::to_string(code);
  if (code == 0) {
    EventLog::infoNoFormat(rd, ending);
    return false;
  }
  EventLog::warningNoFormat(rd, ending);
  return true;
}

// Returns false after stop().
bool Controller::startProgram() {
  Program program(command_);
  const auto process = std::make_shared<tessel::NYXProcessImpl>(program.count(), program.words().data());
  const std::lock_guard guard(mutex_);
  if (stopped_) return false;
  process->start();
  try {
    forward_.start(process);
  } catch (...) {
    process->stop();
    throw;
  }
  process_ = process;
  EventLog::infoNoFormat(rd, "Started " + program.name() + " as process " + std::to_string(process->getProcessId()));
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
