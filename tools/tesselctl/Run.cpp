#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXProcessImpl.h>
#include <tessel/NYXUtils.h>
#include <tessel/ProcessSignalActionHandler.h>

#include "Commands.h"
#include "Output.h"
#include "Process.h"
#include "internal/pc/Platform.h"

namespace tesselctl {
namespace {

using tessel::NYXProcessImpl;

// As shells have it for a program that an interrupt ended.
constexpr int kInterrupted = 130;
// How long the output of a child that was stopped is waited for, which its own children may hold open.
constexpr std::chrono::seconds kDrainLimit{2};

struct Options {
  std::string directory;
  std::string tee;
  std::vector<std::string> command;
};

// Where the lines of both streams go, one after the other.
class Lines {
 public:
  explicit Lines(const std::string& tee) {
    if (tee.empty()) return;
    file_.open(tee, std::ios::binary | std::ios::trunc);
    if (!file_) throw std::runtime_error("cannot write " + tee);
    tee_ = tee;
  }

  // Throws std::runtime_error.
  void write(const std::string& lines) {
    const std::lock_guard guard(mutex_);
    printBytes(lines);
    if (tee_.empty()) return;
    file_ << lines << std::flush;
    if (!file_) throw std::runtime_error("cannot write " + tee_);
  }

 private:
  std::mutex mutex_;
  std::ofstream file_;
  std::string tee_;
};

// Puts the name of the stream before each line. A line that has not ended is kept, up to a length that costs no memory
// to speak of, and then cut.
class LineCutter {
 public:
  explicit LineCutter(std::string prefix) : prefix_(std::move(prefix)) {}

  // What is complete with these bytes.
  std::string add(std::string_view bytes) {
    constexpr std::size_t kLongestLine = 65536;
    std::string lines;
    while (!bytes.empty()) {
      const std::size_t length = std::min(bytes.find('\n'), std::min(bytes.size(), kLongestLine - begun_.size()));
      begun_ += bytes.substr(0, length);
      bytes.remove_prefix(length);
      const bool ended = bytes.starts_with('\n');
      if (ended) bytes.remove_prefix(1);
      const bool full = begun_.size() == kLongestLine;
      // A line end right behind a cut is that of the line that was cut.
      if (full || (ended && !(cut_ && begun_.empty()))) lines += line();
      cut_ = full && !ended;
    }
    return lines;
  }

  // What the stream ended with, if it was no line end.
  std::string rest() { return begun_.empty() ? "" : line(); }

 private:
  std::string line() { return prefix_ + std::exchange(begun_, "") + '\n'; }

  std::string prefix_;
  std::string begun_;
  bool cut_ = false;  // and nothing has come since
};

// How many bytes were read; nothing at the end. A pipe also answers a write of no bytes with none: it has ended only if
// it says so.
template <std::size_t size>
std::optional<DWORD> readSome(HANDLE stream, std::array<char, size>& block) {
  DWORD length = 0;
  if (!ReadFile(stream, block.data(), static_cast<DWORD>(size), &length, nullptr)) return std::nullopt;
  const bool ended = length == 0 && !PeekNamedPipe(stream, nullptr, 0, nullptr, nullptr, nullptr);
  return ended ? std::nullopt : std::optional(length);
}

// A child whose streams are those of this process. Never deleted: the thread that waits for the input, and one that
// reads what a grandchild writes, may still be there when the process ends.
class Session : public tessel::ProcessSignalActionHandler {
 public:
  Session(int argc, char** argv, const Options& options)
      : process_(argc, argv, options.directory), lines_(options.tee) {}

  int run() {
    tessel::NYXUtils::handleSignals(this);
    process_.start();
    if (interrupted_) stop();  // the interrupt may have found nothing to stop
    try {
      return waitForEnd();
    } catch (...) {
      process_.stop();
      throw;
    }
  }

  void action(int signal) override {
    defaultAction(signal);
    interrupted_ = true;
    stop();
  }

 private:
  int waitForEnd() {
    std::thread([this] { read(process_.getOutputStream(), "out: "); }).detach();
    std::thread([this] { read(process_.getErrorStream(), "err: "); }).detach();
    std::thread([this] { forwardInput(); }).detach();
    const int code = process_.waitForProcess();
    const std::string failure = waitForReaders();
    if (!failure.empty()) throw std::runtime_error(failure);
    return interrupted_ ? kInterrupted : code;
  }

  void stop() {
    process_.stop();
    const std::lock_guard guard(mutex_);
    stopped_ = true;
    changed_.notify_all();
  }

  // Past the listeners, which are given texts: here every byte counts.
  void read(HANDLE stream, const std::string& prefix) {
    std::array<char, 65536> block{};
    LineCutter cutter(prefix);
    std::string failure;
    try {
      while (const auto length = readSome(stream, block)) lines_.write(cutter.add({block.data(), *length}));
      lines_.write(cutter.rest());
    } catch (const std::exception& exception) {
      failure = exception.what();
      process_.stop();
    }
    const std::lock_guard guard(mutex_);
    if (failure_.empty()) failure_ = failure;
    stopped_ = stopped_ || !failure.empty();
    --readers_;
    changed_.notify_all();
  }

  // Returns what went wrong.
  std::string waitForReaders() {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [this] { return readers_ == 0 || stopped_; });
    changed_.wait_for(guard, kDrainLimit, [this] { return readers_ == 0; });
    return failure_;
  }

  void forwardInput() {
    std::array<char, 4096> block{};
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    while (const auto length = readSome(input, block)) {
      if (!write({block.data(), *length})) return;  // the child has ended
    }
    process_.closeInputStream();
  }

  bool write(std::string_view bytes) {
    while (!bytes.empty()) {
      DWORD written = 0;
      if (!WriteFile(process_.getInputStream(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        return false;
      }
      bytes.remove_prefix(written);
    }
    return true;
  }

  NYXProcessImpl process_;
  Lines lines_;
  std::atomic<bool> interrupted_{false};
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string failure_;  // guarded by mutex_, like the following
  int readers_ = 2;
  bool stopped_ = false;
};

// Ends the process at once: threads of the session may still be on their way out, and would meet what a normal end
// destroys. Nothing is lost, since all output is written already.
[[noreturn]] void runAndEnd(Session& session) {
  int code = 1;
  try {
    code = session.run();
  } catch (const tessel::NYXException& exception) {
    printError(exception.getMessage());
  } catch (const std::exception& exception) {
    printError(exception.what());
  }
  std::_Exit(code);
}

int run(const Options& options) {
  std::vector<std::string> words{findProgram(options.command.front())};
  std::transform(options.command.begin() + 1, options.command.end(), std::back_inserter(words),
                 tessel::NYXProcess::quoteArgument);
  std::vector<char*> arguments(words.size());
  std::transform(words.begin(), words.end(), arguments.begin(), [](std::string& word) { return word.data(); });
  runAndEnd(*new Session(static_cast<int>(arguments.size()), arguments.data(), options));
}

}  // namespace

void addRun(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("run", "Run a program and show which stream each line of its output is from.");
  const auto options = std::make_shared<Options>();
  command->add_option("--dir", options->directory, "Directory that the program works in; this one unless given");
  command->add_option("--tee", options->tee, "File that the output goes to as well; overwritten");
  command
      ->add_option("COMMAND", options->command, "Program, looked for in the search path, and its arguments, behind --")
      ->required();
  command->footer(
      "Each line goes to standard output behind \"out: \" or \"err: \". Standard input goes to the program, which is\n"
      "stopped when this one is interrupted. The exit code is that of the program; 130 after an interrupt, 1 when the\n"
      "program cannot be started or its output cannot be written, 2 wrong usage.");
  command->callback([options, &chosen] { chosen = [options] { return run(*options); }; });
}

}  // namespace tesselctl
