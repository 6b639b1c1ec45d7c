// The beginning and the end of Java virtual machines, each in a process of its own.
#include "jvm/Jvm.h"

#include <thread>

#include <tessel/EventLog.h>
#include <tessel/NYXUtils.h>
#include <tessel/RasDescriptor.h>

#include "jvm/JavaDiagnostics.h"
#include "support/ChildProcess.h"
#include "support/Watchdog.h"

namespace tessel::test {
namespace {

const RasDescriptor rd("JavaMachines", "B");

// The diagnostics are set up for good, as in a real process, and used by two threads.
void useEverything() {
  RAS::initialize(RASEnvironment::JAVA_APP, &Jvm::instance().env(), logDirectory().string(), kPrefix);
  RAS::setLevel("=ALL");
  NYXUtils::doesCurrentUserHaveSpecialAuthority("mine");
  std::thread([] { NYXUtils::doesCurrentUserHaveSpecialAuthority("other"); }).join();
  EventLog::infoNoFormat(rd, "used");
}

int endMachine() { return Jvm::instance().vm()->DestroyJavaVM() == JNI_OK ? 0 : 1; }

const ChildRegistration ends("ends-its-machine", [] {
  useEverything();
  return endMachine();
});

const ChildRegistration leaves("leaves-its-machine", [] {
  useEverything();
  return 0;
});

const ChildRegistration outlives("outlives-its-machine", [] {
  useEverything();
  const int result = endMachine();
  NYXUtils::doesCurrentUserHaveSpecialAuthority("late");
  EventLog::errorNoFormat(rd, "late");
  RAS::shutdown();
  return result;
});

}  // namespace

TEST(JavaMachines, TwentyBeginAndEndOneAfterTheOther) {
  setTestLimit(std::chrono::minutes(5));
  for (int i = 0; i < 20; ++i) ASSERT_EQ(runChild("ends-its-machine").exitCode, 0U) << i;
}

TEST(JavaMachines, AProcessMayEndWithoutEndingItsMachine) { EXPECT_EQ(runChild("leaves-its-machine").exitCode, 0U); }

TEST(JavaMachines, WhatIsLoggedAfterTheEndOfTheMachineHarmsNothing) {
  EXPECT_EQ(runChild("outlives-its-machine").exitCode, 0U);
}

}  // namespace tessel::test
