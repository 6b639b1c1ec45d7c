// The output of the program, on its way to where the controller writes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include <tessel/tessel.h>

namespace controller {

// Reads the handles of the streams, so that no byte is lost: a listener is given texts, which end at a zero byte.
class Forward {
 public:
  // Both streams are taken on until they end, which may be after the program did: its own children may hold them. The
  // process object lives as long. Throws std::system_error.
  void start(const std::shared_ptr<tessel::NYXProcess>& process);

  // Returns when all streams have ended or the time is over.
  void waitForEnd(std::chrono::seconds limit);

 private:
  void startOne(const std::shared_ptr<tessel::NYXProcess>& process, void* from, unsigned long to);

  std::mutex mutex_;
  std::condition_variable changed_;
  int streams_ = 0;  // guarded by mutex_: how many have not ended
};

}  // namespace controller
