// How listeners and readers of a child's output come and go.
#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>

#include "support/Captures.h"
#include "support/Handles.h"
#include "support/LaunchedProcess.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"
#include "support/Watchdog.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;

std::vector<std::string> linesWith(const std::string& text, const RecordingHandler& log) {
  std::vector<std::string> lines = log.messages();
  std::erase_if(lines, [&](const std::string& line) { return line.find(text) == std::string::npos; });
  return lines;
}

TEST(ProcessStreamReaders, AReplacedReaderLosesNothing) {
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

TEST(ProcessStreamReaders, WhatTheReplacedReaderHasTakenIsDeliveredBeforeTheNewOneStarts) {
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

TEST(ProcessStreamReaders, AListenerCanBeReplacedFromInside) {
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
TEST(ProcessStreamReaders, ReplacingCancelsNothingThatTheListenerDoes) {
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

TEST(ProcessStreamReaders, ReplacingIsTraced) {
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

TEST(ProcessStreamReaders, AListenerThatThrowsIsCapturedOnceAndStillCalled) {
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

TEST(ProcessStreamReaders, AListenerThatThrowsIsCapturedOnceHoweverOftenItIsRegistered) {
  const Captures captures;
  LaunchedProcess process(child({"do-echo"}));
  std::atomic<std::size_t> bytes{0};
  Callback throwing([&](const std::string& data) {
    bytes += data.size();
    throw NYXException("no");
  });
  process.start();
  for (std::size_t round = 1; round <= 3; ++round) {
    process.registerOutputStreamListener(throwing);
    DWORD written = 0;
    WriteFile(process.getInputStream(), "x", 1, &written, nullptr);
    while (bytes < round) SwitchToThread();
  }
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(captures.values("Probe:").size(), 1U);
}

TEST(ProcessStreamReaders, WhateverAListenerThrowsDoesNotEndTheReader) {
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

TEST(ProcessStreamReaders, TheEndOfTheObjectEndsAReaderThatWaitsForOutput) {
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

TEST(ProcessStreamReaders, TheEndOfAnObjectThatWasNeverStartedEndsItsReaders) {
  Collector output;
  const auto makeAndEnd = [&] {
    LaunchedProcess process(child({"do-exit", "0"}));
    process.registerOutputStreamListener(output);
    process.registerErrorStreamListener(output);
  };
  makeAndEnd();  // what is made once in the process exists now
  const HandleBaseline handles;
  makeAndEnd();
  EXPECT_EQ(handles.growth(), 2);  // the threads' handles
}

TEST(ProcessStreamReaders, AnObjectThatEndsInsideItsListenerLeavesAReaderThatEnds) {
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

TEST(ProcessStreamReaders, EachChunkIsTracedWithItsLength) {
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

TEST(ProcessStreamReaders, TheArgumentsAreTracedWithNullForNull) {
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
