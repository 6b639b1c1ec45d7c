// Many connections and many servers, one after the other: nothing is lost, nothing hangs, handles are counted.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/Handles.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Watchdog.h"

namespace tessel::test {
namespace {

// What stays open on purpose: the handle of each thread and the event of each monitor.
constexpr long kHandlesOfAServerStart = 2;  // the listener's thread and its monitor
constexpr long kHandlesOfAConnection = 2;   // the worker's thread and its monitor

TEST(IPCLoad, LosesNoReplyInTenThousandConnections) {
  setTestLimit(std::chrono::seconds(180));
  constexpr int kClients = 4;
  constexpr int kRounds = 2500;
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  std::atomic<int> answered{0};
  std::vector<std::thread> clients;
  for (int c = 0; c < kClients; ++c) {
    clients.emplace_back([&, c] {
      for (int i = 0; i < kRounds; ++i) {
        TestClient client(server.name());
        const IPCMessage reply = client.ask(c * kRounds + i, "round");
        if (reply.getMessageId() == c * kRounds + i && reply.getMessageText() == "round") ++answered;
      }
    });
  }
  for (std::thread& client : clients) client.join();
  EXPECT_EQ(answered, kClients * kRounds);
  EXPECT_EQ(listener.requests(), kClients * kRounds);
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCLoad, KeepsTwoHandlesOpenForEachConnection) {
  constexpr int kConnections = 100;
  EchoListener listener;
  expectServes(TestServer(listener).name());  // what is made once in the process exists now
  const HandleBaseline handles;
  {
    const TestServer server(listener);
    for (int i = 0; i < kConnections; ++i) TestClient(server.name()).ask(i, "x");
    server->disconnect();
  }
  EXPECT_EQ(handles.growth(), kHandlesOfAServerStart + kConnections * kHandlesOfAConnection);
}

TEST(IPCLoad, KeepsNoHandleOpenForAClientThatWasDropped) {
  EventRecorder recorder;
  EchoListener listener;
  expectServes(TestServer(listener).name());
  const HandleBaseline handles;
  {
    const TestServer server(listener, 0);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(RawClient(server.name()).read(), "");
    server->disconnect();
  }
  EXPECT_EQ(handles.growth(), kHandlesOfAServerStart);
}

TEST(IPCLoad, StopsAndStartsAServerAThousandTimes) {
  constexpr int kRounds = 1000;
  setTestLimit(std::chrono::seconds(120));
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  server->disconnect();
  const HandleBaseline handles;
  for (int i = 0; i < kRounds; ++i) {
    server->connect();
    TestClient client(server.name());
    ASSERT_EQ(client.ask(i, "x").getMessageId(), i);
    server->disconnect();
  }
  EXPECT_EQ(handles.growth(), kRounds * (kHandlesOfAServerStart + kHandlesOfAConnection));
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

}  // namespace
}  // namespace tessel::test
