// What a child writes, on its way to listeners.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>

#include <tessel/ProcessStreamReaderImpl.h>

#include "support/LaunchedProcess.h"
#include "support/NamedEvent.h"
#include "support/Watchdog.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;

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

TEST(ProcessStreams, AChunkThatBeginsWithAZeroByteIsAnEmptyText) {
  LaunchedProcess process(child({"do-write-bytes", "006162"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "");
  EXPECT_EQ(output.chunks(), std::vector<std::size_t>{0});
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

}  // namespace
}  // namespace tessel::test
