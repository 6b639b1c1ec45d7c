// The thread of a server by itself: what it returns and leaves behind.
#include <gtest/gtest.h>

#include <windows.h>

#include <tessel/IPCClientConnectionListener.h>
#include <tessel/NYXThreadImpl.h>

#include "faults/PipeFaults.h"
#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/RawPipe.h"

namespace tessel::test {
namespace {

using CreateNamedPipeHook = ImportHook<"CreateNamedPipeA", decltype(CreateNamedPipeA)>;

class ConnectionListener : public testing::Test {
 protected:
  EventRecorder recorder_;
  EchoListener echo_;
  const std::string name_ = uniqueService();
  IPCClientConnectionListener listener_{name_, echo_, -1, "operators"};
  NYXThreadImpl thread_{&listener_};
};

TEST_F(ConnectionListener, ReturnsNothingAfterAnOrderlyEnd) {
  EXPECT_FALSE(listener_.waitRunning(0));
  EXPECT_FALSE(listener_.hasEnded());
  thread_.start();
  while (!listener_.waitRunning(10)) continue;
  EXPECT_TRUE(listener_.shutdown());
  thread_.join();
  EXPECT_EQ(thread_.getExitCode(), 0);
  EXPECT_EQ(listener_.getErrorMessage(), "");
  EXPECT_TRUE(listener_.hasEnded());
  EXPECT_FALSE(listener_.waitRunning(0));
}

TEST_F(ConnectionListener, ReturnsTheNumberOfTheFailureThatEndedIt) {
  CreateNamedPipeHook hook;
  hook.failOnce(kRare, INVALID_HANDLE_VALUE);
  thread_.start();
  thread_.join();
  EXPECT_EQ(thread_.getExitCode(), static_cast<long>(kRare));
  EXPECT_EQ(listener_.getErrorMessage(), messageText("KTBNV0087_CREATE_NAMED_PIPE_FAILED", name_, systemText(kRare)));
}

TEST_F(ConnectionListener, ReturnsTheNumberOfALaterFailure) {
  CreateNamedPipeHook hook;
  hook.replaceWith([&](auto... arguments) {
    if (hook.calls() == 1) return hook.callOriginal(arguments...);
    SetLastError(kRare);
    return INVALID_HANDLE_VALUE;
  });
  thread_.start();
  while (!listener_.waitRunning(10)) continue;
  const RawClient client(name_);
  thread_.join();
  EXPECT_EQ(thread_.getExitCode(), static_cast<long>(kRare));
  EXPECT_EQ(listener_.getErrorMessage(), "") << "it was running";
}

TEST_F(ConnectionListener, NeverStartsAfterAShutdown) {
  CreateNamedPipeHook hook;
  EXPECT_TRUE(listener_.shutdown());
  thread_.start();
  thread_.join();
  EXPECT_EQ(thread_.getExitCode(), 0);
  EXPECT_EQ(hook.calls(), 0U);
}

TEST_F(ConnectionListener, CopiesWithoutItsState) {
  listener_.shutdown();
  IPCClientConnectionListener copy(listener_);
  IPCClientConnectionListener assigned(uniqueService(), echo_, 1, "");
  assigned = listener_;
  for (IPCClientConnectionListener* fresh : {&copy, &assigned}) {
    EXPECT_FALSE(fresh->hasEnded());
    NYXThreadImpl thread(fresh);
    thread.start();
    while (!fresh->waitRunning(10)) continue;
    expectServes(name_);
    EXPECT_TRUE(fresh->shutdown());
    thread.join();
  }
}

}  // namespace
}  // namespace tessel::test
