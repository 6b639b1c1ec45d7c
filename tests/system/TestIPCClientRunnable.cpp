// One worker on a pipe of the test's own.
#include <gmock/gmock.h>

#include <stdexcept>

#include <tessel/IPCClientRunnable.h>
#include <tessel/NYXThreadImpl.h>

#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

// A worker with its connected client. The thread has ended when the object goes.
class Worker {
 public:
  explicit Worker(IPCListener& listener)
      : pipe_(name_), client(name_), runnable(name_, accepted(pipe_), listener), thread_(&runnable) {
    thread_.start();
  }
  ~Worker() {
    runnable.shutdown();
    end();
  }

  const std::string& name() const { return name_; }
  HANDLE pipe() const { return pipe_.handle(); }

  long exitCode() {
    thread_.join();
    return thread_.getExitCode();
  }

  // Ends the worker out of its read.
  long end() {
    while (!thread_.joinFor(1)) thread_.cancelBlockedCall();
    return thread_.getExitCode();
  }

 private:
  static HANDLE accepted(RawServer& pipe) {
    EXPECT_TRUE(pipe.accept());
    return pipe.handle();
  }

  const std::string name_ = uniqueService();
  RawServer pipe_;

 public:
  RawClient client;
  IPCClientRunnable runnable;

 private:
  NYXThreadImpl thread_;
};

TEST(IPCClientRunnable, Returns109WithoutAReportWhenItsClientLeaves) {
  EventRecorder recorder;
  EchoListener listener;
  Worker worker(listener);
  EXPECT_EQ(worker.client.ask(wireMessage(1, 0, "x")), wireMessage(1, 0, "x"));
  worker.client.close();
  EXPECT_EQ(worker.exitCode(), 109);
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCClientRunnable, TellsItsPipe) {
  EchoListener listener;
  Worker worker(listener);
  EXPECT_EQ(worker.runnable.getPipeHandle(), worker.pipe());
}

TEST(IPCClientRunnable, NeverClosesItsPipe) {
  EchoListener listener;
  Worker worker(listener);
  worker.client.close();
  worker.exitCode();
  DWORD flags = 0;
  EXPECT_TRUE(GetHandleInformation(worker.pipe(), &flags));
}

TEST(IPCClientRunnable, AnswersAWrongEyeCatcherAndStaysConnected) {
  EventRecorder recorder;
  EchoListener listener;
  Worker worker(listener);
  EXPECT_EQ(worker.client.ask(std::string(1044, 'q')), wireMessage(0, 1, messageText("KTBNV0092_INVALID_EYE_CATCHER")));
  EXPECT_EQ(worker.client.ask(wireMessage(2, 0, "y")), wireMessage(2, 0, "y"));
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCClientRunnable, AnswersAFailingListenerWithItsMessage) {
  EventRecorder recorder;
  FailingListener listener;
  Worker worker(listener);
  EXPECT_EQ(worker.client.ask(wireMessage(7, 0, "x")), wireMessage(7, 1, "boom"));
  EXPECT_EQ(worker.client.ask(wireMessage(8, 0, "x")), wireMessage(8, 1, "boom"));
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCClientRunnable, IsNotProcessingWhileItReads) {
  EventRecorder recorder;
  EchoListener listener;
  Worker worker(listener);
  EXPECT_FALSE(worker.runnable.shutdown());
  EXPECT_THAT(worker.end(), testing::AnyOf(0, ERROR_OPERATION_ABORTED));  // stopped before its read or in it
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCClientRunnable, IsProcessingInsideTheListenerAndEndsAfterItsReply) {
  BlockingListener listener;
  Worker worker(listener);
  ASSERT_TRUE(worker.client.write(wireMessage(3, 0, "slow")));
  ASSERT_TRUE(listener.waitEntered());
  EXPECT_TRUE(worker.runnable.shutdown());
  listener.release();
  EXPECT_EQ(worker.client.read(), wireMessage(3, 0, "slow"));
  EXPECT_EQ(worker.exitCode(), 0);
}

TEST(IPCClientRunnable, ReportsAReplyToAClientThatIsGone) {
  EventRecorder recorder;
  BlockingListener listener;
  Worker worker(listener);
  ASSERT_TRUE(worker.client.write(wireMessage(3, 0, "slow")));
  ASSERT_TRUE(listener.waitEntered());
  worker.client.close();
  listener.release();
  EXPECT_EQ(worker.exitCode(), ERROR_NO_DATA);
  EXPECT_EQ(recorder.errors(),
            std::vector<std::string>{messageText("KTBNV0086_WRITE_FAILED", worker.name(), systemText(ERROR_NO_DATA))});
  EXPECT_TRUE(worker.runnable.shutdown()) << "a worker that ended on its way stays marked as processing";
}

TEST(IPCClientRunnable, ReportsAReadThatIsCancelledWithoutAStop) {
  EventRecorder recorder;
  EchoListener listener;
  Worker worker(listener);
  EXPECT_EQ(worker.end(), ERROR_OPERATION_ABORTED);
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{messageText("KTBNV0085_READ_FAILED", worker.name(),
                                                                    systemText(ERROR_OPERATION_ABORTED))});
}

TEST(IPCClientRunnable, EndsAtAMessageOfNoBytesAndReportsItOnce) {
  EventRecorder recorder;
  EchoListener listener;
  Worker worker(listener);
  SetLastError(ERROR_INVALID_HANDLE);
  ASSERT_TRUE(worker.client.write(""));
  EXPECT_EQ(worker.exitCode(), 0) << "the system has no number for it";
  EXPECT_EQ(recorder.errors(),
            std::vector<std::string>{messageText("KTBNV0085_READ_FAILED", worker.name(), systemText(NO_ERROR))});
}

TEST(IPCClientRunnable, DecidesNoTextByBytesOfAnEarlierMessage) {
  EchoListener listener;
  Worker worker(listener);
  worker.client.ask(wireMessage(1, 0, std::string(1024, '\x01')));
  // The text length lies behind this message and is zero, not what the longer message left there.
  EXPECT_EQ(worker.client.ask(wireStart(8) + wireNumber(3) + wireNumber(0)),
            wireMessage(0, 1, messageText("KTBNV0094_MESSAGE_TOO_SHORT", "16", "20")));
}

class ForeignlyFailingListener : public IPCListener {
 public:
  IPCMessage onMessage(const IPCMessage&) override { throw std::runtime_error("foreign"); }
};

TEST(IPCClientRunnable, TurnsAStandardExceptionIntoTheEndOfTheConnection) {
  EventRecorder recorder;
  ForeignlyFailingListener listener;
  Worker worker(listener);
  EXPECT_EQ(worker.client.ask(wireMessage(7, 0, "x")), "");
  EXPECT_EQ(worker.exitCode(), -1);
  EXPECT_EQ(recorder.count(messageText("KTBNV0149_UNCAUGHT_EXCEPTION", "class NYXException: foreign")), 1);
}

TEST(IPCClientRunnable, CopiesWithAMonitorOfItsOwn) {
  EchoListener listener;
  Worker worker(listener);
  IPCClientRunnable copy(worker.runnable);
  EXPECT_EQ(copy.getPipeHandle(), worker.pipe());
  EXPECT_FALSE(copy.shutdown());
  EXPECT_EQ(worker.client.ask(wireMessage(1, 0, "x")), wireMessage(1, 0, "x")) << "the original was not told to stop";
  EXPECT_EQ(worker.client.ask(wireMessage(2, 0, "x")), wireMessage(2, 0, "x"));
}

TEST(IPCClientRunnable, KnowsTheServiceThatItsThreadServes) {
  struct AskingListener : IPCListener {
    std::string name;
    IPCMessage onMessage(const IPCMessage& request) override {
      const bool right = IPCClientRunnable::isServing(name) && !IPCClientRunnable::isServing(name + "x");
      return IPCMessage(request.getMessageId(), right ? "yes" : "no");
    }
  } listener;
  Worker worker(listener);
  listener.name = worker.name();
  EXPECT_EQ(worker.client.ask(wireMessage(1, 0, "")), wireMessage(1, 0, "yes"));
  EXPECT_FALSE(IPCClientRunnable::isServing(worker.name()));
}

}  // namespace
}  // namespace tessel::test
