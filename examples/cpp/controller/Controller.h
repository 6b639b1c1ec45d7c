// Keeps a program running.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <tessel/tessel.h>

#include "Forward.h"
#include "RestartPolicy.h"

namespace controller {

class Controller : public tessel::ProcessSignalActionHandler {
 public:
  // The settings are maxRestartCount, maxRestartInterval and maxRestartDelay.
  Controller(std::vector<std::string> command, const tessel::NativeProperties& properties);

  // Runs the program, again and again. Returns false when it was to be restarted too often, true after stop() and
  // when the program has ended with exit code 0.
  bool run();

  // Ends the program, and run(). Any thread.
  void stop();

  // Of an interrupt.
  void action(int signal) override;

 private:
  bool runProgram();
  bool startProgram();
  bool waitBeforeRestart();
  bool wasStopped();

  static const tessel::RasDescriptor rd;

  const std::vector<std::string> command_;
  const int count_;
  const std::chrono::seconds interval_;
  const std::chrono::seconds delay_;
  RestartPolicy policy_;
  Forward forward_;
  std::mutex mutex_;
  std::condition_variable stopping_;
  bool stopped_ = false;                         // guarded by mutex_
  std::shared_ptr<tessel::NYXProcess> process_;  // guarded by mutex_; null while none runs
};

}  // namespace controller
