// What a child writes, on its way to listeners.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/ProcessStreamReaderImpl.h>

#include "support/Captures.h"
#include "support/Handles.h"
#include "support/LaunchedProcess.h"
#include "support/NamedEvent.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"
#include "support/Watchdog.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;

// A listener made of a function.
class Callback : public ProcessStreamReaderListener {
 public:
  explicit Callback(std::function<void(const std::string&)> call) : call_(std::move(call)) {}
  void processOutput(const std::string& data) override { call_(data); }

 private:
  std::function<void(const std::string&)> call_;
};

std::vector<std::string> linesWith(const std::string& text, const RecordingHandler& log) {
  std::vector<std::string> lines = log.messages();
  std::erase_if(lines, [&](const std::string& line) { return line.find(text) == std::string::npos; });
  return lines;
}

// An event that a grandchild holds the streams for.
class Held {
 public:
  Held() : name_("tessel-held-" + std::to_string(GetCurrentProcessId()) + '-' + std::to_string(++count)), end_(name_) {}
  ~Held() { end_.set(); }
  const std::string& name() const { return name_; }
  void letGo() { end_.set(); }

 private:
  static inline int count = 0;
  std::string name_;
  NamedEvent end_;
};

TEST(ProcessStreams, OutputAndErrorGoToTheirOwnListeners) {
  LaunchedProcess process(child({"do-say", "to output", "to error"}));
  Collector output;
  Collector error;
  process.registerOutputStreamListener(output);
  process.registerErrorStreamListener(error);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "to output");
  EXPECT_EQ(error.data(), "to error");
}

TEST(ProcessStreams, AListenerCanBeRegisteredAfterTheStart) {
  LaunchedProcess process(child({"do-say", "out", "err"}));
  process.start();
  Collector both;
  process.registerOutputStreamListener(both);
  process.registerErrorStreamListener(both);
  EXPECT_EQ(process.waitForProcess(), 0);
  std::string data = both.data();
  EXPECT_TRUE(data == "outerr" || data == "errout") << data;
}

TEST(ProcessStreams, AListenerCanBeRegisteredAfterTheEnd) {
  LaunchedProcess process(child({"do-say", "kept", ""}));
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  Collector output;
  process.registerOutputStreamListener(output);
  process.waitForProcess();
  EXPECT_EQ(output.data(), "kept");
}

TEST(ProcessStreams, WithoutAListenerTheStreamsCanBeReadByTheirHandles) {
  LaunchedProcess process(child({"do-say", "out", "err"}));
  process.start();
  const auto readAll = [](void* handle) {
    std::string text(100, ' ');
    DWORD length = 0;
    std::size_t size = 0;
    while (ReadFile(handle, text.data() + size, static_cast<DWORD>(text.size() - size), &length, nullptr)) {
      size += length;
    }
    return text.substr(0, size);
  };
  EXPECT_EQ(readAll(process.getOutputStream()), "out");
  EXPECT_EQ(readAll(process.getErrorStream()), "err");
  EXPECT_EQ(process.waitForProcess(), 0);
}

TEST(ProcessStreams, AChunkEndsAtItsFirstZeroByte) {
  LaunchedProcess process(child({"do-zero"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "ab");
  EXPECT_EQ(output.chunks(), std::vector<std::size_t>{2});
}

TEST(ProcessStreams, HundredThousandBytesComeInChunksOfAtMost65535) {
  LaunchedProcess process(child({"do-write", "out", "100000"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), alphabet(100000));
  const std::vector<std::size_t> chunks = output.chunks();
  EXPECT_GE(chunks.size(), 2U);
  EXPECT_LE(*std::max_element(chunks.begin(), chunks.end()), 65535U);
}

TEST(ProcessStreams, AHundredMegabytesArriveWhole) {
  setTestLimit(std::chrono::seconds(300));
  LaunchedProcess process(child({"do-write", "out", std::to_string(100 * kMegabyte)}));
  AlphabetCounter output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.bytes(), 100 * kMegabyte);
  EXPECT_TRUE(output.right());
  EXPECT_LE(output.longestChunk(), 65535U);
}

TEST(ProcessStreams, BothStreamsAtFullSpeedArriveWhole) {
  setTestLimit(std::chrono::seconds(120));
  LaunchedProcess process(child({"do-write", "both", std::to_string(10 * kMegabyte)}));
  AlphabetCounter output;
  AlphabetCounter error;
  process.registerOutputStreamListener(output);
  process.registerErrorStreamListener(error);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  for (const AlphabetCounter* listener : {&output, &error}) {
    EXPECT_EQ(listener->bytes(), 10 * kMegabyte);
    EXPECT_TRUE(listener->right());
  }
}

TEST(ProcessStreams, AChildThatClosesItsStreamsEndsTheReadersAndRunsOn) {
  LaunchedProcess process(child({"do-close-streams"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  // The pipe is at its end although the child waits for its input.
  ProcessStreamReaderImpl reader(process.getErrorStream(), output);
  EXPECT_EQ(onOtherThread([&] { return reader.run(); }), ERROR_BROKEN_PIPE);
  EXPECT_EQ(process.getExitCode(), 259);
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 3);
  EXPECT_EQ(output.data(), "");
}

TEST(ProcessStreams, WaitingGoesOnUntilAGrandchildHasClosedTheStreams) {
  Held held;
  LaunchedProcess process(child({"do-leave", "do-hold", held.name()}));
  std::atomic<bool> letGo{false};
  Callback output([&](const std::string&) {
    letGo = true;
    held.letGo();
  });
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 5);
  EXPECT_TRUE(letGo);
}

TEST(ProcessStreams, AfterAStopNobodyWaitsForAGrandchild) {
  Held held;
  LaunchedProcess process(child({"do-leave", "do-hold", held.name(), "and-sleep"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  ASSERT_TRUE(output.waitForBytes(10));
  process.stop();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "grandchild");
}

TEST(ProcessStreams, AfterAStopNobodyWaitsForAGrandchildThatNeverStopsWriting) {
  Held held;
  LaunchedProcess process(child({"do-leave", "do-flood", held.name(), "and-sleep"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  ASSERT_TRUE(output.waitForBytes(10000));
  process.stop();
  EXPECT_EQ(process.waitForProcess(), 0);
}

TEST(ProcessStreams, AStopByAListenerEndsAWaitForAGrandchild) {
  Held held;
  LaunchedProcess process(child({"do-leave", "do-hold", held.name(), "and-sleep"}));
  Callback output([&](const std::string&) { process.stop(); });
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
}

TEST(ProcessStreams, WhatAStoppedChildHasWrittenIsDelivered) {
  constexpr std::size_t kBytes = 3000;
  LaunchedProcess process(child({"do-sleep", alphabet(kBytes)}));
  process.start();
  DWORD available = 0;
  while (available < kBytes) PeekNamedPipe(process.getOutputStream(), nullptr, 0, nullptr, &available, nullptr);
  process.stop();
  Collector output;
  process.registerOutputStreamListener(output);
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), alphabet(kBytes));
}

TEST(ProcessStreams, WaitingInsideAListenerDoesNotWaitForItsOwnReader) {
  LaunchedProcess process(child({"do-say", "x", ""}));
  int codeInside = -2;
  Callback output([&](const std::string&) { codeInside = process.waitForProcess(); });
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(codeInside, 0);
}

TEST(ProcessStreams, AReplacedReaderLosesNothing) {
  constexpr std::size_t kBytes = 20 * kMegabyte;
  setTestLimit(std::chrono::seconds(120));
  LaunchedProcess process(child({"do-write", "out", std::to_string(kBytes)}));
  std::vector<std::unique_ptr<Collector>> listeners;
  process.start();
  for (int i = 0; i < 20; ++i) {
    listeners.push_back(std::make_unique<Collector>());
    process.registerOutputStreamListener(*listeners.back());
    ASSERT_TRUE(listeners.back()->waitForBytes(100000)) << i;
  }
  EXPECT_EQ(process.waitForProcess(), 0);
  std::string all;
  for (const auto& listener : listeners) all += listener->data();
  EXPECT_TRUE(all == alphabet(kBytes)) << all.size();
}

TEST(ProcessStreams, WhatTheReplacedReaderHasTakenIsDeliveredBeforeTheNewOneStarts) {
  LaunchedProcess process(child({"do-echo"}));
  Event inside;
  Event goOn;
  std::string first;
  Callback slow([&](const std::string& data) {
    inside.set();
    goOn.wait();
    first += data;
  });
  process.registerOutputStreamListener(slow);
  process.start();
  DWORD written = 0;
  WriteFile(process.getInputStream(), "one", 3, &written, nullptr);
  ASSERT_TRUE(inside.wait());
  Collector second;
  Work replacing([&] {
    process.registerOutputStreamListener(second);
    return 0;
  });
  NYXThreadImpl thread(&replacing);
  thread.start();
  EXPECT_FALSE(thread.joinFor(50));  // it waits for the callback
  goOn.set();
  thread.join();
  EXPECT_EQ(first, "one");
  WriteFile(process.getInputStream(), "two", 3, &written, nullptr);
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(first, "one");
  EXPECT_EQ(second.data(), "two");
}

TEST(ProcessStreams, AListenerCanBeReplacedFromInside) {
  LaunchedProcess process(child({"do-echo"}));
  Collector second;
  std::string first;
  Callback replacing([&](const std::string& data) {
    process.registerOutputStreamListener(second);
    first += data;
  });
  process.registerOutputStreamListener(replacing);
  process.start();
  DWORD written = 0;
  WriteFile(process.getInputStream(), "one", 3, &written, nullptr);
  // Only when the new one reads can the child get rid of what follows.
  while (first.empty()) SwitchToThread();
  WriteFile(process.getInputStream(), "two", 3, &written, nullptr);
  EXPECT_TRUE(second.waitForBytes(3));
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(first, "one");
  EXPECT_EQ(second.data(), "two");
}

// A call of the listener's own that blocks is no read of the reader.
TEST(ProcessStreams, ReplacingCancelsNothingThatTheListenerDoes) {
  LaunchedProcess process(child({"do-say", "x", ""}));
  LaunchedProcess other(child({"do-echo"}));
  other.start();
  Event inside;
  BOOL readDone = FALSE;
  Callback reading([&](const std::string&) {
    std::array<char, 3> data{};
    DWORD length = 0;
    inside.set();
    readDone = ReadFile(other.getOutputStream(), data.data(), 3, &length, nullptr);
  });
  process.registerOutputStreamListener(reading);
  process.start();
  ASSERT_TRUE(inside.wait());
  Collector second;
  Work replacing([&] {
    process.registerOutputStreamListener(second);
    return 0;
  });
  NYXThreadImpl thread(&replacing);
  thread.start();
  EXPECT_FALSE(thread.joinFor(100));
  DWORD written = 0;
  WriteFile(other.getInputStream(), "abc", 3, &written, nullptr);
  thread.join();
  EXPECT_NE(readDone, 0);
  other.closeInputStream();
  other.waitForProcess();
  process.waitForProcess();
}

TEST(ProcessStreams, ReplacingIsTraced) {
  const TraceScope trace("NYXProcessImpl=MODERATE");
  const RecordingHandler log("NYXProcessImpl");
  LaunchedProcess process(child({"do-exit", "0"}));
  Collector listener;
  process.registerOutputStreamListener(listener);
  process.registerErrorStreamListener(listener);
  EXPECT_EQ(linesWith("stopping", log), std::vector<std::string>{});
  process.registerOutputStreamListener(listener);
  EXPECT_EQ(linesWith("stopping previous outputStreamReaderThread", log).size(), 1U);
  process.registerErrorStreamListener(listener);
  EXPECT_EQ(linesWith("stopping previous errorStreamReaderThread", log).size(), 1U);
  EXPECT_EQ(linesWith("stopping", log).size(), 2U);
}

TEST(ProcessStreams, AListenerThatThrowsIsCapturedOnceAndStillCalled) {
  for (const bool foreign : {false, true}) {
    const Captures captures;
    LaunchedProcess process(child({"do-write", "out", std::to_string(kMegabyte)}));
    std::size_t bytes = 0;
    Callback throwing([&](const std::string& data) {
      bytes += data.size();
      if (foreign) throw std::runtime_error("no");
      throw NYXException("no");
    });
    process.registerOutputStreamListener(throwing);
    process.start();
    EXPECT_EQ(process.waitForProcess(), 0);
    EXPECT_EQ(bytes, kMegabyte);
    EXPECT_EQ(captures.values("Probe:").size(), 1U);
    EXPECT_EQ(captures.values("Method:"), std::vector<std::string>{"processOutput"});
  }
}

TEST(ProcessStreams, WhateverAListenerThrowsDoesNotEndTheReader) {
  const Captures captures;
  LaunchedProcess process(child({"do-write", "out", "200000"}));
  std::size_t bytes = 0;
  Callback throwing([&](const std::string& data) {
    bytes += data.size();
    throw 7;  // NOLINT(hicpp-exception-baseclass)
  });
  process.registerOutputStreamListener(throwing);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(bytes, 200000U);
  EXPECT_EQ(captures.values("Cause:"),
            std::vector<std::string>{"class NYXException: an exception that is no std::exception"});
}

TEST(ProcessStreams, TheEndOfTheObjectEndsAReaderThatWaitsForOutput) {
  LaunchedProcess keeper(child({"do-echo"}));
  keeper.start();
  auto process = std::make_unique<LaunchedProcess>(child({"do-sleep"}));
  Collector output;
  process->registerOutputStreamListener(output);
  process->registerErrorStreamListener(output);
  process->start();
  ASSERT_TRUE(output.waitForBytes(5));
  const HANDLE opened = OpenProcess(PROCESS_TERMINATE, FALSE, process->getProcessId());
  process.reset();
  EXPECT_NE(TerminateProcess(opened, 0), 0);
  CloseHandle(opened);
}

TEST(ProcessStreams, TheEndOfAnObjectThatWasNeverStartedEndsItsReaders) {
  Collector output;
  const HandleBaseline handles;
  {
    LaunchedProcess process(child({"do-exit", "0"}));
    process.registerOutputStreamListener(output);
    process.registerErrorStreamListener(output);
  }
  EXPECT_EQ(handles.growth(), 2);  // the threads' handles
}

TEST(ProcessStreams, AnObjectThatEndsInsideItsListenerLeavesAReaderThatEnds) {
  auto process = std::make_unique<LaunchedProcess>(child({"do-say", "x", ""}));
  Event ended;
  Callback output([&](const std::string&) {
    process.reset();
    ended.set();
  });
  process->registerOutputStreamListener(output);
  process->start();
  EXPECT_TRUE(ended.wait());
}

TEST(ProcessStreams, EachChunkIsTracedWithItsLength) {
  const TraceScope trace("ProcessStreamReaderImpl=MODERATE");
  const RecordingHandler log("ProcessStreamReaderImpl");
  LaunchedProcess process(child({"do-zero"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  process.waitForProcess();
  const std::vector<std::string> lines = linesWith("bytesRead: ", log);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0], "-  d  run data [bytesRead: ] [5] [ data: ] [ab]");
}

TEST(ProcessStreams, TheArgumentsAreTracedWithNullForNull) {
  const TraceScope trace("NYXProcessImpl=FLOW");
  const RecordingHandler log("NYXProcessImpl");
  std::string program = "tool";
  std::string last = "b c";
  std::array<char*, 3> arguments{program.data(), nullptr, last.data()};
  const NYXProcessImpl process(3, arguments.data());
  EXPECT_EQ(linesWith("init [tool, null, b c]", log).size(), 1U);
}

}  // namespace
}  // namespace tessel::test
