// The number in a message is that of the failed call, although trace is on and its output changes the last error.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include <tessel/LogHandler.h>
#include <tessel/Logger.h>
#include <tessel/NYXException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/NYXUtils.h>
#include <tessel/Synchronize.h>

#include "support/ImportHook.h"
#include "support/RareError.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

// Without a text in the system: also a message that shows the text shows the number.

class DisturbingHandler : public LogHandler {
 public:
  DisturbingHandler() : LogHandler(LogLevel::ALL) { Logger::getLogger("")->addHandler(*this); }
  ~DisturbingHandler() override { Logger::getLogger("")->removeHandler(*this); }
  DisturbingHandler(const DisturbingHandler&) = delete;
  DisturbingHandler& operator=(const DisturbingHandler&) = delete;

  void publish(LogRecord&) override {
    ++published;
    SetLastError(ERROR_ARENA_TRASHED);
  }

  unsigned published = 0;
};

class MessageNumber : public testing::Test {
 protected:
  MessageNumber() : trace("=ALL") {}
  ~MessageNumber() override { EXPECT_GT(handler.published, 0U); }

  Work work{[] { return 0; }};
  DisturbingHandler handler;
  TraceScope trace;
};

TEST_F(MessageNumber, OfCreateThreadArrives) {
  ImportHook<"CreateThread", decltype(CreateThread)> hook;
  hook.failOnce(kRareError);
  NYXThreadImpl thread(&work);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.start(); }),
            messageText("KTBNV0013_UNABLE_TO_CREATE_THREAD", kRareText));
}

TEST_F(MessageNumber, OfTerminateThreadArrives) {
  ImportHook<"TerminateThread", decltype(TerminateThread)> hook;
  hook.failOnce(kRareError);
  NYXThreadImpl thread(&work);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.stop(); }),
            messageText("KTBNV0014_UNABLE_TO_TERMINATE_THREAD", kRareText));
}

TEST_F(MessageNumber, OfWaitingForAThreadArrives) {
  ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)> hook;
  NYXThreadImpl thread(&work);
  hook.failOnce(kRareError, WAIT_FAILED);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.join(); }), messageText("KTBNV0015_WAIT_FOR_THREAD_FAILED", kRareText));
  hook.failOnce(kRareError, WAIT_FAILED);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.joinFor(1); }),
            messageText("KTBNV0015_WAIT_FOR_THREAD_FAILED", kRareText));
}

TEST_F(MessageNumber, OfGetExitCodeThreadArrives) {
  ImportHook<"GetExitCodeThread", decltype(GetExitCodeThread)> hook;
  hook.failAlways(kRareError);
  NYXThreadImpl thread(&work);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.getExitCode(); }),
            messageText("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", kRareText));
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.isAlive(); }),
            messageText("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", kRareText));
}

TEST_F(MessageNumber, OfCreateEventArrives) {
  ImportHook<"CreateEventA", decltype(CreateEventA)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([] { NYXThreadSyncImpl(); }),
            messageText("KTBNV0008_UNABLE_TO_CREATE_EVENT", kRareText));
}

TEST_F(MessageNumber, OfSetEventArrives) {
  NYXThreadSyncImpl monitor;
  ImportHook<"SetEvent", decltype(SetEvent)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([&] { monitor.notifyAll(); }),
            messageText("KTBNV0009_UNABLE_TO_SET_EVENT", kRareText));
}

TEST_F(MessageNumber, OfResetEventArrives) {
  NYXThreadSyncImpl monitor;
  monitor.notifyAll();
  const Synchronize guard(&monitor);
  ImportHook<"ResetEvent", decltype(ResetEvent)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([&] { monitor.wait(0); }),
            messageText("KTBNV0010_UNABLE_TO_RESET_EVENT", kRareText));
}

TEST_F(MessageNumber, OfWaitingForAnEventArrives) {
  NYXThreadSyncImpl monitor;
  const Synchronize guard(&monitor);
  ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)> hook;
  hook.failOnce(kRareError, WAIT_FAILED);
  EXPECT_EQ(thrownBy<NYXException>([&] { monitor.wait(0); }),
            messageText("KTBNV0011_WAIT_FOR_EVENT_FAILED", kRareText));
}

std::string groupFailure() {
  return thrownBy<NYXIOException>([] { NYXUtils::isCurrentUserMemberOfGroup("no such group"); });
}

TEST_F(MessageNumber, OfOpenProcessTokenArrives) {
  ImportHook<"OpenProcessToken", decltype(OpenProcessToken)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(groupFailure(), messageText("KTBNV0129_OPENPROCESSTOKEN_FAILED", kRareText));
}

TEST_F(MessageNumber, OfGetTokenInformationArrives) {
  ImportHook<"GetTokenInformation", decltype(GetTokenInformation)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(groupFailure(), messageText("KTBNV0130_OPENPROCESSTOKEN_FAILED", kRareText));
  hook.replaceWith([&](HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size, PDWORD needed) {
    if (!buffer) return hook.callOriginal(token, kind, buffer, size, needed);
    SetLastError(kRareError);
    return FALSE;
  });
  EXPECT_EQ(groupFailure(), messageText("KTBNV0131_GETTOKENINFORMATION_FAILED", kRareText));
}

TEST_F(MessageNumber, OfLookupAccountSidArrives) {
  ImportHook<"LookupAccountSidA", decltype(LookupAccountSidA)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(groupFailure(), messageText("KTBNV0132_LOOKUPACCOUNTSID_FAILED", kRareText));
}

TEST_F(MessageNumber, OfSetEnvironmentVariableArrives) {
  ImportHook<"SetEnvironmentVariableA", decltype(SetEnvironmentVariableA)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([] { NYXUtils::setenv("TESSEL_TEST", "1"); }),
            messageText("KTBNV0110_SETENV_FAILED", "TESSEL_TEST", kRareText));
}

TEST_F(MessageNumber, OfTheCallersOwnCallArrives) {
  SetLastError(kRareError);
  EXPECT_EQ(NYXUtils::getLastErrorMessage(), kRareText);
}

}  // namespace
}  // namespace tessel::test
