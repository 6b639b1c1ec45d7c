// The child program of the tests of process launching, and listeners to its output.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXProcessImpl.h>
#include <tessel/ProcessStreamReaderListener.h>

#include "support/Event.h"

namespace tessel::test {

inline const std::string kChildProgram = TESSEL_PROCESS_CHILD;

// The arguments as main receives them.
class ArgumentVector {
 public:
  explicit ArgumentVector(std::vector<std::string> words) : words_(std::move(words)) {
    for (std::string& word : words_) pointers_.push_back(word.data());
  }
  ArgumentVector(const ArgumentVector&) = delete;
  ArgumentVector& operator=(const ArgumentVector&) = delete;

  int count() const { return static_cast<int>(pointers_.size()); }
  char** values() { return pointers_.data(); }

 private:
  std::vector<std::string> words_;
  std::vector<char*> pointers_;
};

// A process object of a program and its arguments.
class LaunchedProcess : private ArgumentVector, public NYXProcessImpl {
 public:
  explicit LaunchedProcess(std::vector<std::string> words, const std::string& folder = std::string())
      : ArgumentVector(std::move(words)), NYXProcessImpl(count(), values(), folder) {}

  // Wine fails one launch in a thousand, by an internal error, where a system does not let addresses be fixed.
  void start() override {
    for (int triesLeft = 2;; --triesLeft) {
      try {
        return NYXProcessImpl::start();
      } catch (const NYXException& exception) {
        if (triesLeft == 0 || exception.getMessage().find("1359") == std::string::npos) throw;
      }
    }
  }
};

// The child program with these arguments.
inline std::vector<std::string> child(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), kChildProgram);
  return arguments;
}

// Keeps what is delivered.
class Collector : public ProcessStreamReaderListener {
 public:
  void processOutput(const std::string& data) override {
    const std::lock_guard guard(mutex_);
    data_ += data;
    chunks_.push_back(data.size());
    changed_.notify_all();
  }

  std::string data() const {
    const std::lock_guard guard(mutex_);
    return data_;
  }
  std::vector<std::size_t> chunks() const {
    const std::lock_guard guard(mutex_);
    return chunks_;
  }
  // Returns false when the watchdog ran out.
  bool waitForBytes(std::size_t count) {
    std::unique_lock guard(mutex_);
    return changed_.wait_for(guard, kWatchdog, [&] { return data_.size() >= count; });
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::string data_;
  std::vector<std::size_t> chunks_;
};

// A listener made of a function.
class Callback : public ProcessStreamReaderListener {
 public:
  explicit Callback(std::function<void(const std::string&)> call) : call_(std::move(call)) {}
  void processOutput(const std::string& data) override { call_(data); }

 private:
  std::function<void(const std::string&)> call_;
};

// What the child writes when it is told to write so much.
inline std::string alphabet(std::size_t size) {
  std::string text(size, ' ');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>('a' + i % 26);
  return text;
}

// Counts instead of keeping, and checks that the alphabet goes on.
class AlphabetCounter : public ProcessStreamReaderListener {
 public:
  void processOutput(const std::string& data) override {
    for (const char c : data) right_ = c == static_cast<char>('a' + bytes_++ % 26) && right_;
    longest_ = std::max(longest_, data.size());
  }
  std::size_t bytes() const { return bytes_; }
  bool right() const { return right_; }
  std::size_t longestChunk() const { return longest_; }

 private:
  std::size_t bytes_ = 0;
  std::size_t longest_ = 0;
  bool right_ = true;
};

}  // namespace tessel::test
