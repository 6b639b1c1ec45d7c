// Locks between processes, and the sudden end of a holder.
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>

#include <tessel/FileLock.h>
#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/NamedEvent.h"
#include "support/StartedChild.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Lock = std::unique_ptr<FileLock>;

int hold(bool shared) {
  const std::string name = StartedChild::argument();
  const Lock lock(FileLock::newInstance(name, shared, !shared));
  NamedEvent(eventName(name)).set();
  Sleep(INFINITE);
  return 0;
}

const ChildRegistration exclusive("holds-a-lock", [] { return hold(false); });
const ChildRegistration shared("shares-a-lock", [] { return hold(true); });

const ChildRegistration tries("tries-a-lock", [] {
  const Lock lock(FileLock::newInstanceIfFree(StartedChild::argument(), false, false));
  return lock ? 1 : 2;
});

class FileLockProcesses : public testing::Test {
 protected:
  // A process that holds the lock by now.
  std::unique_ptr<StartedChild> startHolder(const std::string& body) {
    auto child = std::make_unique<StartedChild>(body, name);
    EXPECT_TRUE(ready.wait());
    return child;
  }

  const TempFolder folder;
  const std::string name = (folder.path() / "agent.lck").string();
  NamedEvent ready{eventName(name)};
};

TEST_F(FileLockProcesses, ExcludeEachOther) {
  const auto child = startHolder("holds-a-lock");
  EXPECT_EQ(thrownBy<NYXException>([&] { FileLock::newInstance(name, false, true); }),
            messageText("KTBNV0057_UNABLE_TO_LOCK_FILE", name, NYXUtils::getLastErrorMessage(ERROR_SHARING_VIOLATION)));
  EXPECT_EQ(FileLock::newInstanceIfFree(name, true, false), nullptr);
}

TEST_F(FileLockProcesses, ShareALockThatAllTakeShared) {
  const auto child = startHolder("shares-a-lock");
  const Lock lock(FileLock::newInstance(name, true, false));
  EXPECT_EQ(FileLock::newInstanceIfFree(name, false, false), nullptr);
}

TEST_F(FileLockProcesses, AreExcludedByThisOne) {
  Lock lock(FileLock::newInstance(name, false, false));
  EXPECT_EQ(StartedChild("tries-a-lock", name).exitCode(), 2U);
  lock.reset();
  EXPECT_EQ(StartedChild("tries-a-lock", name).exitCode(), 1U);
}

TEST_F(FileLockProcesses, ReleaseTheLockWhenTheyAreKilled) {
  const auto child = startHolder("holds-a-lock");
  const std::string left = bytesOf(folder.path() / "agent.pid");
  EXPECT_NE(left, "");
  EXPECT_NE(left, std::to_string(GetCurrentProcessId()));
  child->kill();
  const Lock lock(FileLock::newInstance(name, false, true));
  EXPECT_EQ(bytesOf(folder.path() / "agent.pid"), std::to_string(GetCurrentProcessId()));
}

}  // namespace
}  // namespace tessel::test
