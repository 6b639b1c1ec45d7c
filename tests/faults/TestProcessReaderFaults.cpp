// The readers of a child's output when the system refuses one of their calls.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/ProcessStreamReaderImpl.h>

#include "support/ImportHook.h"
#include "support/LaunchedProcess.h"
#include "support/NamedEvent.h"
#include "support/RareError.h"
#include "support/Thrown.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

using ReadHook = ImportHook<"ReadFile", decltype(ReadFile)>;
using PeekHook = ImportHook<"PeekNamedPipe", decltype(PeekNamedPipe)>;
using CancelHook = ImportHook<"CancelSynchronousIo", decltype(CancelSynchronousIo)>;
using ThreadHook = ImportHook<"CreateThread", decltype(CreateThread)>;
using WaitHook = ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)>;

void finish(LaunchedProcess& process) {
  process.closeInputStream();
  process.waitForProcess();
}

TEST(ProcessReaderFaults, AThreadThatCannotBeMadeIsReportedAndLeavesNoReader) {
  LaunchedProcess process(child({"do-echo"}));
  process.start();
  Collector output;
  {
    ThreadHook hook;
    hook.failAlways(kRareError);
    const std::string expected = messageText("KTBNV0013_UNABLE_TO_CREATE_THREAD", kRareText);
    EXPECT_EQ(thrownBy<NYXException>([&] { process.registerOutputStreamListener(output); }), expected);
    EXPECT_EQ(thrownBy<NYXException>([&] { process.registerErrorStreamListener(output); }), expected);
  }
  process.registerOutputStreamListener(output);
  DWORD written = 0;
  WriteFile(process.getInputStream(), "abc", 3, &written, nullptr);
  finish(process);
  EXPECT_EQ(output.data(), "abc");
}

TEST(ProcessReaderFaults, AReadThatFailsEndsTheReaderWithItsNumber) {
  LaunchedProcess process(child({"do-say", "abc", ""}));
  process.start();
  Collector output;
  ProcessStreamReaderImpl reader(process.getOutputStream(), output);
  ReadHook hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(onOtherThread([&] { return reader.run(); }), static_cast<long>(kRareError));
  EXPECT_EQ(hook.calls(), 1U);
  EXPECT_EQ(output.data(), "");
  finish(process);
}

TEST(ProcessReaderFaults, AReadOfNoBytesEndsTheReader) {
  LaunchedProcess process(child({"do-say", "abc", ""}));
  process.start();
  Collector output;
  ProcessStreamReaderImpl reader(process.getOutputStream(), output);
  ReadHook hook;
  hook.replaceWith([](HANDLE, LPVOID, DWORD, LPDWORD length, LPOVERLAPPED) {
    *length = 0;
    return TRUE;
  });
  EXPECT_EQ(onOtherThread([&] { return reader.run(); }), 0);
  EXPECT_EQ(hook.calls(), 1U);
  finish(process);
}

TEST(ProcessReaderFaults, ReadsAskFor65535Bytes) {
  LaunchedProcess process(child({"do-say", "abc", ""}));
  process.start();
  Collector output;
  ProcessStreamReaderImpl reader(process.getOutputStream(), output);
  ReadHook hook;
  hook.replaceWith([&](HANDLE handle, LPVOID buffer, DWORD size, LPDWORD length, LPOVERLAPPED overlapped) {
    EXPECT_EQ(handle, process.getOutputStream());
    EXPECT_EQ(size, 65535U);
    EXPECT_EQ(overlapped, nullptr);
    return hook.callOriginal(handle, buffer, size, length, overlapped);
  });
  EXPECT_EQ(onOtherThread([&] { return reader.run(); }), ERROR_BROKEN_PIPE);
  EXPECT_EQ(output.data(), "abc");
  finish(process);
}

// Nobody of this library cancelled it, so it is a failure like any other.
TEST(ProcessReaderFaults, AReadThatSomebodyElseCancelsEndsTheReader) {
  LaunchedProcess process(child({"do-echo"}));
  process.start();
  Collector output;
  ProcessStreamReaderImpl reader(process.getOutputStream(), output);
  ReadHook hook;
  hook.failOnce(ERROR_OPERATION_ABORTED);
  EXPECT_EQ(onOtherThread([&] { return reader.run(); }), ERROR_OPERATION_ABORTED);
  finish(process);
}

// The reader has 65,535 bytes at once: the buffer has a place for the zero behind them.
TEST(ProcessReaderFaults, AFullReadIsDeliveredWhole) {
  LaunchedProcess process(child({"do-echo"}));
  Collector output;
  ProcessStreamReaderImpl reader(process.getOutputStream(), output);
  ReadHook hook;
  hook.replaceWith([&](HANDLE, LPVOID buffer, DWORD size, LPDWORD length, LPOVERLAPPED) {
    std::fill_n(static_cast<char*>(buffer), size, 'x');
    *length = hook.calls() == 1 ? size : 0;
    return TRUE;
  });
  EXPECT_EQ(onOtherThread([&] { return reader.run(); }), 0);
  EXPECT_EQ(output.data(), std::string(65535, 'x'));
}

TEST(ProcessReaderFaults, AStopMayComeBeforeTheReaderRuns) {
  LaunchedProcess process(child({"do-echo"}));
  Collector output;
  ProcessStreamReaderImpl stopped(process.getOutputStream(), output);
  stopped.stop();
  EXPECT_EQ(onOtherThread([&] { return stopped.run(); }), 0);
  ProcessStreamReaderImpl drained(process.getOutputStream(), output);
  drained.drain();
  EXPECT_EQ(onOtherThread([&] { return drained.run(); }), 0);
}

TEST(ProcessReaderFaults, AReaderThatCannotSeeWhatIsLeftDeliversNoMore) {
  LaunchedProcess process(child({"do-say", "abc", ""}));
  process.start();
  process.waitForProcess();
  Collector output;
  ProcessStreamReaderImpl reader(process.getOutputStream(), output);
  reader.drain();
  PeekHook hook;
  hook.failAlways(kRareError);
  EXPECT_EQ(onOtherThread([&] { return reader.run(); }), 0);
  EXPECT_EQ(hook.calls(), 1U);
  EXPECT_EQ(output.data(), "");
  finish(process);
}

// The grandchild holds the pipe, so that only a cancelled read could end the reader.
TEST(ProcessReaderFaults, AReadThatCannotBeCancelledIsLeftBehind) {
  const std::string name = "tessel-uncancelled-" + std::to_string(GetCurrentProcessId());
  NamedEvent end(name);
  Collector output;
  {
    const ReadHook reads;
    LaunchedProcess process(child({"do-leave", "do-hold", name, "and-sleep"}));
    process.registerOutputStreamListener(output);
    process.start();
    ASSERT_TRUE(output.waitForBytes(10));
    while (reads.calls() < 2) SwitchToThread();
    CancelHook hook;
    hook.failAlways(kRareError);
    process.stop();
    EXPECT_EQ(process.waitForProcess(), 0);
    EXPECT_GE(hook.calls(), 2U);
  }
  end.set();
  EXPECT_EQ(output.data(), "grandchild");
}

// Without the system's word it is given up at once, and its listener may go.
TEST(ProcessReaderFaults, AReaderWhoseEndCannotBeSeenIsLeftBehind) {
  Collector output;
  LaunchedProcess process(child({"do-echo"}));
  process.registerOutputStreamListener(output);
  process.start();
  {
    WaitHook hook;
    hook.failAlways(kRareError, WAIT_FAILED);
    EXPECT_EQ(process.waitForProcess(), 259);
  }
  DWORD written = 0;
  WriteFile(process.getInputStream(), "abc", 3, &written, nullptr);
  finish(process);
  EXPECT_EQ(output.data(), "");
}

}  // namespace
}  // namespace tessel::test
