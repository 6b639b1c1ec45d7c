// File locks whose system calls fail.
#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include <tessel/FileLock.h>
#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "support/EventRecorder.h"
#include "support/FileHooks.h"
#include "support/Files.h"
#include "support/Handles.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using EndHook = ImportHook<"SetEndOfFile", decltype(SetEndOfFile)>;
using CloseHook = ImportHook<"CloseHandle", decltype(CloseHandle)>;

class FileLockFaults : public testing::Test {
 protected:
  // What the system opens for good in the first failures of a process.
  FileLockFaults() {
    CreateHook hook;
    hook.failOnce(kRareError, INVALID_HANDLE_VALUE);
    failure(false);
    baseline.emplace();
  }
  ~FileLockFaults() override {
    EXPECT_EQ(baseline->growth(), 0);
    take();
    EXPECT_EQ(baseline->growth(), 0);
  }

  void take() { std::unique_ptr<FileLock>(FileLock::newInstance(lock, false, true)); }
  std::string failure(bool writePid) const {
    return thrownBy<NYXException>([&] { std::unique_ptr<FileLock>(FileLock::newInstance(lock, false, writePid)); });
  }
  void expectNoNumber() {
    EXPECT_EQ(failure(true), messageText("KTBNV0121_UNABLE_TO_OPEN_FILE", pid, kRareText));
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"agent.lck"});
    const std::unique_ptr<FileLock> free(FileLock::newInstanceIfFree(lock, false, false));
    EXPECT_NE(free, nullptr) << "the lock was released";
  }

  const TempFolder folder;
  const std::string lock = (folder.path() / "agent.lck").string();
  const std::string pid = (folder.path() / "agent.pid").string();
  std::optional<HandleBaseline> baseline;
};

TEST_F(FileLockFaults, AFileThatCannotBeOpenedIsReportedWithItsName) {
  CreateHook hook;
  hook.failAlways(kRareError, INVALID_HANDLE_VALUE);
  EXPECT_EQ(failure(false), messageText("KTBNV0057_UNABLE_TO_LOCK_FILE", lock, kRareText));
  EXPECT_EQ(thrownBy<NYXException>([&] { FileLock::newInstanceIfFree(lock, false, false); }),
            messageText("KTBNV0057_UNABLE_TO_LOCK_FILE", lock, kRareText));
  EXPECT_EQ(hook.calls(), 2U);
}

TEST_F(FileLockFaults, OnlyASharingViolationMeansHeld) {
  CreateHook hook;
  hook.failOnce(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
  EXPECT_EQ(FileLock::newInstanceIfFree(lock, false, false), nullptr);
}

TEST_F(FileLockFaults, LockAndProcessNumberAreOpenedAlike) {
  struct Call {
    std::string path;
    DWORD access;
    DWORD sharing;
  };
  std::vector<Call> calls;
  CreateHook hook;
  hook.replaceWith([&](LPCSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                       DWORD flags, HANDLE pattern) {
    calls.push_back({path, access, sharing});
    EXPECT_EQ(security, nullptr);
    EXPECT_EQ(disposition, 4U);
    EXPECT_EQ(flags, 128U);
    EXPECT_EQ(pattern, nullptr);
    return hook.callOriginal(path, access, sharing, security, disposition, flags, pattern);
  });
  take();
  std::unique_ptr<FileLock>(FileLock::newInstance(lock, true, false));
  ASSERT_EQ(calls.size(), 3U);
  EXPECT_EQ(calls[0].path, lock);
  EXPECT_EQ(calls[1].path, pid);
  for (const std::size_t exclusive : {0U, 1U}) {
    EXPECT_EQ(calls[exclusive].access, 0x40000000U);
    EXPECT_EQ(calls[exclusive].sharing, 0U);
  }
  EXPECT_EQ(calls[2].access, 0x80000000U);
  EXPECT_EQ(calls[2].sharing, 1U);
}

TEST_F(FileLockFaults, AProcessNumberThatCannotBeOpenedReleasesTheLock) {
  CreateHook hook;
  hook.replaceWith([&](LPCSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                       DWORD flags, HANDLE pattern) {
    if (path != pid) return hook.callOriginal(path, access, sharing, security, disposition, flags, pattern);
    SetLastError(kRareError);
    return INVALID_HANDLE_VALUE;
  });
  expectNoNumber();
}

TEST_F(FileLockFaults, AProcessNumberThatCannotBeWrittenReleasesTheLock) {
  WriteHook hook;
  hook.failOnce(kRareError);
  expectNoNumber();
}

TEST_F(FileLockFaults, AProcessNumberThatIsWrittenInPartReleasesTheLock) {
  WriteHook hook;
  hook.replaceWith([&](HANDLE file, LPCVOID bytes, DWORD, LPDWORD written, LPOVERLAPPED overlapped) {
    const BOOL done = hook.callOriginal(file, bytes, 1, written, overlapped);
    SetLastError(kRareError);
    return done;
  });
  expectNoNumber();
}

TEST_F(FileLockFaults, AProcessNumberThatCannotBeCutReleasesTheLock) {
  EndHook hook;
  hook.failOnce(kRareError);
  expectNoNumber();
}

TEST_F(FileLockFaults, AProcessNumberWhoseFileDoesNotCloseIsTraced) {
  EventRecorder recorder;
  const Tracing tracing("FileLockImpl");
  CloseHook hook;
  hook.replaceWith([&](HANDLE handle) {
    hook.passOn();
    hook.callOriginal(handle);
    SetLastError(kRareError);
    return FALSE;
  });
  std::unique_ptr<FileLock> held(FileLock::newInstance(lock, false, true));
  EXPECT_EQ(recorder.traced("Failed to close PID file, reason: " + kRareText), 1);
  EXPECT_EQ(recorder.tracedLevel("Failed to close PID file, reason: " + kRareText), LogLevel::FINER);
  held.reset();
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"agent.lck"});
}

TEST_F(FileLockFaults, AProcessNumberThatCannotBeRemovedIsTracedAndTheLockReleased) {
  EventRecorder recorder;
  const Tracing tracing("FileLockImpl");
  DeleteHook hook;
  hook.failOnce(kRareError);
  take();
  EXPECT_EQ(recorder.traced("Failed to delete PID file, reason: " + kRareText), 1);
}

TEST_F(FileLockFaults, TheProcessNumberIsRemovedWhileTheLockIsHeld) {
  DeleteHook hook;
  hook.replaceWith([&](LPCSTR path) {
    EXPECT_EQ(path, pid);
    EXPECT_EQ(FileLock::newInstanceIfFree(lock, false, false), nullptr);
    return hook.callOriginal(path);
  });
  take();
  EXPECT_EQ(hook.calls(), 1U);
}

}  // namespace
}  // namespace tessel::test
