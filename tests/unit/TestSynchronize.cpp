#include <gtest/gtest.h>

#include <string>

#include <tessel/NYXThreadSync.h>
#include <tessel/Synchronize.h>

namespace tessel::test {
namespace {

class Calls : public NYXThreadSync {
 public:
  void lock() override { text += "lock "; }
  void unlock() override { text += "unlock "; }
  int wait(long) override { return 0; }
  void wait() override {}
  void notifyAll() override {}

  std::string text;
};

TEST(Synchronize, HoldsTheMonitorForItsScope) {
  Calls monitor;
  {
    const Synchronize guard(&monitor);
    EXPECT_EQ(monitor.text, "lock ");
  }
  EXPECT_EQ(monitor.text, "lock unlock ");
}

TEST(Synchronize, Nests) {
  Calls monitor;
  {
    const Synchronize outer(&monitor);
    const Synchronize inner(&monitor);
  }
  EXPECT_EQ(monitor.text, "lock lock unlock unlock ");
}

TEST(Synchronize, UnlocksWhenAnExceptionPasses) {
  Calls monitor;
  try {
    const Synchronize guard(&monitor);
    throw 1;
  } catch (int) {
    EXPECT_EQ(monitor.text, "lock unlock ");
  }
}

TEST(Synchronize, DoesNothingWithANullPointer) {
  EXPECT_NO_THROW({ const Synchronize guard(nullptr); });
}

TEST(Synchronize, ACopyHoldsTheMonitorOnceMore) {
  Calls monitor;
  {
    const Synchronize guard(&monitor);
    { const Synchronize copy(guard); }  // NOLINT(performance-unnecessary-copy-initialization): the copy is the test
    EXPECT_EQ(monitor.text, "lock lock unlock ");
  }
  EXPECT_EQ(monitor.text, "lock lock unlock unlock ");
}

TEST(Synchronize, AssignmentChangesOverToTheOthersMonitor) {
  Calls monitor;
  Calls other;
  {
    Synchronize guard(&monitor);
    guard = Synchronize(&other);
    EXPECT_EQ(monitor.text, "lock unlock ");
    EXPECT_EQ(other.text, "lock lock unlock ");
  }
  EXPECT_EQ(monitor.text, "lock unlock ");
  EXPECT_EQ(other.text, "lock lock unlock unlock ");
}

TEST(Synchronize, AssignmentToItselfKeepsTheHold) {
  Calls monitor;
  {
    Synchronize guard(&monitor);
    const Synchronize& same = guard;
    guard = same;
    EXPECT_EQ(monitor.text, "lock lock unlock ");
  }
  EXPECT_EQ(monitor.text, "lock lock unlock unlock ");
}

TEST(Synchronize, CopiesANullPointer) {
  const Synchronize nothing(nullptr);
  Synchronize copy(nothing);
  EXPECT_NO_THROW(copy = nothing);
}

TEST(Synchronize, IsNoHolderWhenLockingFails) {
  class Failing : public Calls {
   public:
    void lock() override { throw 1; }
  };
  Failing monitor;
  EXPECT_THROW(const Synchronize guard(&monitor), int);
  EXPECT_EQ(monitor.text, "");
}

}  // namespace
}  // namespace tessel::test
