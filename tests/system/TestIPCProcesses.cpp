// Server and client in processes of their own, and the sudden end of one of them.
#include <gmock/gmock.h>

#include <windows.h>

#include <tessel/IPCNotFoundException.h>
#include <tessel/NYXException.h>

#include "support/ChildProcess.h"
#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/StartedChild.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

// Answers "pid" with its process id, holds back the reply to "hold", sends back everything else.
class ChildListener : public IPCListener {
 public:
  IPCMessage onMessage(const IPCMessage& request) override {
    if (request.getMessageText() == "pid") {
      return IPCMessage(request.getMessageId(), std::to_string(GetCurrentProcessId()));
    }
    if (request.getMessageText() == "hold") Sleep(INFINITE);
    return request;
  }
};

const ChildRegistration server("serves", [] {
  ChildListener listener;
  const TestServer running(listener, -1, StartedChild::argument());
  Sleep(INFINITE);
  return 0;
});

const ChildRegistration goodClient("asks-a-hundred-times", [] {
  TestClient client(StartedChild::argument());
  int answered = 0;
  for (int i = 0; i < 100; ++i) {
    if (client.ask(i, "from another process").getMessageId() == i) ++answered;
  }
  return answered;
});

const ChildRegistration hangingClient("sends-and-hangs", [] {
  RawClient client(StartedChild::argument());
  client.write(wireMessage(1, 0, "then I am gone"));
  Sleep(INFINITE);
  return 0;
});

TEST(IPCProcesses, ServeEachOther) {
  const std::string name = uniqueService();
  const StartedChild child("serves", name);
  const auto client = connectWhenServed(name);
  EXPECT_NE(client->ask(1, "pid").getMessageText(), std::to_string(GetCurrentProcessId()));
  EXPECT_EQ(shown(client->ask(2, "across")), "IPCMessage id:2 status:0 text :across");
}

TEST(IPCProcesses, AreServedAtTheSameTime) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer here(listener);
  StartedChild first("asks-a-hundred-times", here.name());
  StartedChild second("asks-a-hundred-times", here.name());
  EXPECT_EQ(first.exitCode(), 100U);
  EXPECT_EQ(second.exitCode(), 100U);
  EXPECT_EQ(listener.requests(), 200);
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCProcesses, MayBeKilledInTheMiddleOfAnExchange) {
  EventRecorder recorder;
  BlockingListener listener;
  const TestServer here(listener);
  {
    StartedChild child("sends-and-hangs", here.name());
    ASSERT_TRUE(listener.waitEntered());
    child.kill();
  }
  listener.release();
  expectServes(here.name());
  here->disconnect();
  EXPECT_EQ(recorder.errors(),
            std::vector<std::string>{messageText("KTBNV0086_WRITE_FAILED", here.name(), systemText(ERROR_NO_DATA))});
}

TEST(IPCProcesses, MayBeKilledWhileTheyServe) {
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  const std::string name = uniqueService();
  StartedChild child("serves", name);
  const auto client = connectWhenServed(name);
  std::future<IPCMessage> reply = std::async(std::launch::async, [&] { return client->ask(1, "hold"); });
  ASSERT_TRUE(recorder.waitForTraced("ERROR_IO_PENDING"));
  child.kill();
  EXPECT_EQ(shown(reply.get()), "IPCMessage id:-1 status:0 text :") << "the sign of a lost server";
  EXPECT_EQ(thrownBy<NYXException>([&] { client->ask(2, "x"); }),
            messageText("KTBNV0063_WRITE_FAILED", name, systemText(ERROR_NO_DATA)));
  (*client)->disconnect();
  EXPECT_EQ(thrownBy<IPCNotFoundException>([&] { (*client)->connect(); }),
            messageText("KTBNV0066_OPEN_ERROR", name, systemText(ERROR_FILE_NOT_FOUND)));
}

TEST(IPCProcesses, TakeOverTheNameOfAKilledOne) {
  const std::string name = uniqueService();
  {
    StartedChild child("serves", name);
    connectWhenServed(name);
    child.kill();
  }
  EchoListener listener;
  const TestServer here(listener, -1, name);
  expectServes(name);
}

}  // namespace
}  // namespace tessel::test
