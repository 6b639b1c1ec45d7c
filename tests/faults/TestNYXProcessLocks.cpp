// What process objects share: no lock is held while one of them reports, and none undoes what another thread has done.
#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>

#include "support/ImportHook.h"
#include "support/LaunchedProcess.h"
#include "support/NoMemory.h"
#include "support/RareError.h"
#include "support/Thrown.h"
#include "support/TracePoint.h"
#include "support/TraceScope.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

using CodeHook = ImportHook<"GetExitCodeProcess", decltype(GetExitCodeProcess)>;
using LaunchHook = ImportHook<"CreateProcessA", decltype(CreateProcessA)>;
using PipeHook = ImportHook<"CreatePipe", decltype(CreatePipe)>;
using TextHook = ImportHook<"FormatMessageA", DWORD(DWORD, LPCVOID, DWORD, DWORD, LPSTR, DWORD, char**)>;

// Another thread that does it while this one is where it is. It runs from the beginning: a thread that starts needs the
// trace lock.
class Meanwhile {
 public:
  explicit Meanwhile(std::function<void()> call)
      : work_([this, call = std::move(call)] {
          running_.set();
          wanted_.wait();
          call();
          done_.set();
          return 0;
        }),
        thread_(&work_) {
    thread_.start();
    running_.wait();
  }
  ~Meanwhile() {
    wanted_.set();
    thread_.join();
  }
  Meanwhile(const Meanwhile&) = delete;
  Meanwhile& operator=(const Meanwhile&) = delete;

  // Returns false when the watchdog ran out.
  bool isDone() {
    wanted_.set();
    wasWanted_ = true;
    return done_.wait();
  }
  bool wasWanted() const { return wasWanted_; }

 private:
  Event running_;
  Event wanted_;
  Event done_;
  bool wasWanted_ = false;
  Work work_;
  NYXThreadImpl thread_;
};

TEST(ProcessLocks, NoLockIsHeldWhileALaunchThatFailedIsReported) {
  LaunchedProcess missing({"C:\\nowhere\\tool"});
  Meanwhile other([] { const LaunchedProcess process(child({"do-exit", "0"})); });
  TextHook hook;
  hook.replaceWith([&](auto... arguments) {
    EXPECT_TRUE(other.isDone());
    return hook.callOriginal(arguments...);
  });
  EXPECT_THROW(missing.start(), NYXException);
  EXPECT_TRUE(other.wasWanted());
}

// Its message is the first thing behind the failure that needs memory.
TEST(ProcessLocks, NoLockIsHeldWhileAPipeThatCannotBeMadeIsReported) {
  Meanwhile other([] { const LaunchedProcess process(child({"do-exit", "0"})); });
  bool failed = false;
  PipeHook pipes;
  pipes.replaceWith([&](auto... arguments) -> BOOL {
    if (pipes.calls() > 1) return pipes.callOriginal(arguments...);
    failed = true;
    SetLastError(kRareError);
    return FALSE;
  });
  ImportHook<"malloc", void*(std::size_t)> memory;
  memory.replaceWith([&, thread = GetCurrentThreadId()](std::size_t size) {
    const bool isFirst = GetCurrentThreadId() == thread && failed && !other.wasWanted();
    EXPECT_TRUE(!isFirst || other.isDone());
    return memory.callOriginal(size);
  });
  EXPECT_THROW(LaunchedProcess(child({"do-exit", "0"})), NYXException);
  EXPECT_TRUE(other.wasWanted());
}

TEST(ProcessLocks, NoLockIsHeldWhileAReaderThatHasEndedIsDestroyed) {
  const TraceScope trace("ProcessStreamReaderImpl=FLOW");
  LaunchedProcess process(child({"do-exit", "9"}));
  LaunchedProcess asked(child({"do-exit", "0"}));
  Meanwhile other([&] { asked.getExitCode(); });
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 9);
  const TracePoint point("ProcessStreamReaderImpl", "~ProcessStreamReaderImpl", LogRecordType::ENTRY,
                         [&] { EXPECT_TRUE(other.isDone()); });
  process.registerOutputStreamListener(output);
  EXPECT_TRUE(other.wasWanted());
}

// The thread that asks is held between the answer and what it makes of it.
TEST(ProcessLocks, AnOldAnswerDoesNotTakeThePlaceOfTheExitCode) {
  LaunchedProcess process(child({"do-sleep"}));
  process.start();
  Event answered;
  Event stopped;
  CodeHook hook;
  hook.replaceWith([&](HANDLE handle, LPDWORD code) {
    const bool isFirst = hook.calls() == 1;
    const BOOL result = hook.callOriginal(handle, code);
    if (isFirst) {
      EXPECT_EQ(*code, 259U);
      answered.set();
      stopped.wait();
    }
    return result;
  });
  int answer = -2;
  Work asking([&] {
    answer = process.getExitCode();
    return 0;
  });
  NYXThreadImpl thread(&asking);
  thread.start();
  ASSERT_TRUE(answered.wait());
  process.stop();
  EXPECT_EQ(process.getExitCode(), 0);
  stopped.set();
  thread.join();
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(process.getExitCode(), 0);
  EXPECT_EQ(process.waitForProcess(), 0);
}

// Nothing between the launch and keeping the child may fail: it would run on unknown to everybody.
TEST(ProcessLocks, AChildThatWasLaunchedNeedsNoMoreMemory) {
  LaunchedProcess process(child({"do-exit", "6"}));
  {
    NoMemory memory;
    LaunchHook hook;
    hook.replaceWith([&](auto... arguments) {
      const BOOL launched = hook.callOriginal(arguments...);
      memory.refuse();
      return launched;
    });
    EXPECT_NO_THROW(process.NYXProcessImpl::start());
  }
  EXPECT_EQ(process.waitForProcess(), 6);
}

}  // namespace
}  // namespace tessel::test
