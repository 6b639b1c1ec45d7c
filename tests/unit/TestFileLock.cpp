#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include <tessel/FileLockImpl.h>
#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "support/Captures.h"
#include "support/Files.h"
#include "support/Handles.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"

namespace tessel {
namespace {

using test::bytesOf;
using test::messageText;
using test::thrownBy;

using Names = std::vector<std::string>;
using Lock = std::unique_ptr<FileLock>;

class FileLockTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return (folder.path() / name).string(); }
  Names names() const { return test::namesIn(folder.path()); }

  Lock take(bool shared, bool writePid) const { return Lock(FileLock::newInstance(lockName, shared, writePid)); }
  Lock takeIfFree(bool shared) const { return Lock(FileLock::newInstanceIfFree(lockName, shared, false)); }

  std::string failure(bool shared, bool writePid) const {
    return thrownBy<NYXException>([&] { take(shared, writePid); });
  }
  std::string heldFailure() const {
    return messageText("KTBNV0057_UNABLE_TO_LOCK_FILE", lockName,
                       NYXUtils::getLastErrorMessage(ERROR_SHARING_VIOLATION));
  }

  const test::TempFolder folder;
  const std::string lockName = path("agent.lck");
  const std::string pidName = path("agent.pid");
};

TEST_F(FileLockTest, CreatesAnEmptyFileThatStaysBehind) {
  take(false, false);
  EXPECT_EQ(names(), Names{"agent.lck"});
  EXPECT_EQ(bytesOf(lockName), "");
}

TEST_F(FileLockTest, NeverCutsTheFile) {
  folder.write("agent.lck", "kept");
  take(false, true);
  take(true, false);
  EXPECT_EQ(bytesOf(lockName), "kept");
}

TEST_F(FileLockTest, ExcludesASecondHolder) {
  const Lock lock = take(false, false);
  EXPECT_EQ(failure(false, false), heldFailure());
  EXPECT_EQ(failure(true, false), heldFailure());
}

TEST_F(FileLockTest, LetsSharedHoldersInTogetherAndNoOther) {
  const Lock first = take(true, false);
  const Lock second = take(true, false);
  EXPECT_EQ(failure(false, false), heldFailure());
}

TEST_F(FileLockTest, IsFreeWhenTheLastHolderHasGone) {
  Lock first = take(true, false);
  Lock second = take(true, false);
  first.reset();
  EXPECT_EQ(takeIfFree(false), nullptr);
  second.reset();
  EXPECT_NE(takeIfFree(false), nullptr);
}

TEST_F(FileLockTest, IfFreeGivesNothingForAHeldLock) {
  const Lock lock = take(false, false);
  EXPECT_EQ(takeIfFree(false), nullptr);
  EXPECT_EQ(takeIfFree(true), nullptr);
}

TEST_F(FileLockTest, IfFreeFailsWhereTheFileCannotBeOpened) {
  const std::string nowhere = path("missing/agent.lck");
  const std::string text =
      messageText("KTBNV0057_UNABLE_TO_LOCK_FILE", nowhere, NYXUtils::getLastErrorMessage(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(thrownBy<NYXException>([&] { FileLock::newInstance(nowhere, false, false); }), text);
  EXPECT_EQ(thrownBy<NYXException>([&] { FileLock::newInstanceIfFree(nowhere, false, false); }), text);
}

TEST_F(FileLockTest, WritesTheProcessNumberAndRemovesItWithTheLock) {
  Lock lock = take(false, true);
  EXPECT_EQ(names(), (Names{"agent.lck", "agent.pid"}));
  EXPECT_EQ(bytesOf(pidName), std::to_string(GetCurrentProcessId()));
  lock.reset();
  EXPECT_EQ(names(), Names{"agent.lck"});
}

TEST_F(FileLockTest, IfFreeWritesTheProcessNumberToo) {
  const Lock lock(FileLock::newInstanceIfFree(lockName, false, true));
  EXPECT_EQ(bytesOf(pidName), std::to_string(GetCurrentProcessId()));
}

TEST_F(FileLockTest, LeavesNoDigitsOfALongerProcessNumber) {
  folder.write("agent.pid", "123456789012345");
  const Lock lock = take(false, true);
  EXPECT_EQ(bytesOf(pidName), std::to_string(GetCurrentProcessId()));
}

TEST_F(FileLockTest, WithoutProcessNumberLeavesThatOfAnotherLockAlone) {
  folder.write("agent.pid", "123");
  take(false, false);
  EXPECT_EQ(bytesOf(pidName), "123");
}

TEST_F(FileLockTest, CannotShareAProcessNumber) {
  EXPECT_EQ(failure(true, true),
            messageText("KTBNV0121_UNABLE_TO_OPEN_FILE", pidName, NYXUtils::getLastErrorMessage(ERROR_ACCESS_DENIED)));
  EXPECT_EQ(names(), Names{"agent.lck"});
  EXPECT_NE(takeIfFree(false), nullptr);
}

TEST_F(FileLockTest, IsNotHeldWhenTheProcessNumberCannotBeWritten) {
  std::filesystem::create_directory(pidName);
  EXPECT_EQ(failure(false, true),
            messageText("KTBNV0121_UNABLE_TO_OPEN_FILE", pidName, NYXUtils::getLastErrorMessage(ERROR_ACCESS_DENIED)));
  EXPECT_TRUE(std::filesystem::is_directory(pidName));
  EXPECT_NE(takeIfFree(false), nullptr);
}

TEST_F(FileLockTest, CapturesANameWithoutItsEndingAndHoldsTheLock) {
  for (const std::string name : {"agent.lock", "agent.LCK", "lck"}) {
    const test::Captures captures;
    const Lock lock(FileLock::newInstance(path(name), false, true));
    EXPECT_EQ(captures.values("Class:"), Names{"FileLockImpl"});
    EXPECT_EQ(captures.values("Cause:"), Names{"class NYXException: File lock name expected to end .lck but doesn't"});
    EXPECT_EQ(Lock(FileLock::newInstanceIfFree(path(name), false, false)), nullptr) << name;
  }
  EXPECT_EQ(names(), (Names{"agent.LCK", "agent.lock", "lck"})) << "no process number";
}

TEST_F(FileLockTest, NeedsItsEndingOnlyForTheProcessNumber) {
  const test::Captures captures;
  const Lock lock(FileLock::newInstance(path("any name"), false, false));
  EXPECT_EQ(captures.records().size(), 0U);
}

TEST_F(FileLockTest, TheShortestNameIsItsEnding) {
  const Lock lock(FileLock::newInstance(path(".lck"), false, true));
  EXPECT_EQ(names(), (Names{".lck", ".pid"}));
}

TEST_F(FileLockTest, ShowsItsHandle) {
  const FileLockImpl lock(lockName, false, false);
  std::ostringstream shown;
  shown << lock;
  std::ostringstream shownAsBase;
  shownAsBase << static_cast<const FileLock&>(lock);
  EXPECT_EQ(shown.str(), shownAsBase.str());
  EXPECT_EQ(shown.str().substr(0, 23), "FileLock for handle: 0x");
  const auto handle = reinterpret_cast<HANDLE>(std::stoull(shown.str().substr(23), nullptr, 16));
  DWORD flags = HANDLE_FLAG_INHERIT;
  EXPECT_NE(GetHandleInformation(handle, &flags), 0);
  EXPECT_EQ(flags, 0U) << "children do not inherit the lock";
}

TEST_F(FileLockTest, LeavesNoHandleOpen) {
  const auto useAll = [&] {
    take(false, true);
    take(true, false);
    failure(true, true);
    const Lock lock = take(false, false);
    failure(false, false);
    takeIfFree(false);
  };
  useAll();
  const test::HandleBaseline handles;
  useAll();
  EXPECT_EQ(handles.growth(), 0);
  const Lock held = take(false, true);
  EXPECT_EQ(handles.growth(), 1) << "the lock file stays open, that of the process number does not";
}

}  // namespace
}  // namespace tessel
