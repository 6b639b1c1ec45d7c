// The end of a server with clients in every state.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include <tessel/NYXException.h>

#include "support/EchoListener.h"
#include "support/Event.h"
#include "support/EventRecorder.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"
#include "support/Watchdog.h"

namespace tessel::test {
namespace {

using namespace std::chrono_literals;

std::vector<std::unique_ptr<TestClient>> connectedClients(const std::string& name, int count) {
  std::vector<std::unique_ptr<TestClient>> clients;
  for (int i = 0; i < count; ++i) {
    clients.push_back(std::make_unique<TestClient>(name));
    EXPECT_EQ(clients.back()->ask(i, "hello").getMessageId(), i);
  }
  return clients;
}

TEST(IPCServerStop, EndsAllIdleClientsAndReportsNothing) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  const auto clients = connectedClients(server.name(), 3);
  server->disconnect();
  for (const auto& client : clients) {
    thrownBy<NYXException>([&] { client->ask(9, "too late"); });
  }
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCServerStop, TakesNoTwoSecondsWithSixtyFourIdleClients) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  const auto clients = connectedClients(server.name(), 64);
  EXPECT_TRUE(endsWithin(2s, [&] { server->disconnect(); }));
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCServerStop, LetsARequestInProgressBeAnswered) {
  EventRecorder recorder;
  BlockingListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  std::future<IPCMessage> reply = std::async(std::launch::async, [&] { return client.ask(7, "slow"); });
  ASSERT_TRUE(listener.waitEntered());
  std::future<void> stop = std::async(std::launch::async, [&] { server->disconnect(); });
  EXPECT_EQ(stop.wait_for(100ms), std::future_status::timeout);
  listener.release();
  EXPECT_EQ(shown(reply.get()), "IPCMessage id:7 status:0 text :slow");
  stop.get();
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

// Longer in a request than a stop waits for a client that does not read.
class LongListener : public IPCListener {
 public:
  IPCMessage onMessage(const IPCMessage& request) override {
    entered.set();
    stopping.wait();
    std::this_thread::sleep_for(2500ms);
    leaving.set();
    return request;
  }

  Event entered;
  Event stopping;
  Event leaving;
};

TEST(IPCServerStop, GivesTheClientOfALongRequestItsTimeToReadTheReply) {
  EventRecorder recorder;
  LongListener listener;
  const TestServer server(listener);
  RawClient slow(server.name());
  ASSERT_TRUE(slow.write(wireMessage(7, 0, "long")));
  ASSERT_TRUE(listener.entered.wait());
  listener.stopping.set();
  std::future<void> stop = std::async(std::launch::async, [&] { server->disconnect(); });
  ASSERT_TRUE(listener.leaving.wait());
  std::this_thread::sleep_for(300ms);  // a client that takes its time
  EXPECT_EQ(slow.read(), wireMessage(7, 0, "long"));
  stop.get();
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCServerStop, ReportsTheReplyThatAClientNeverReads) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  RawClient lazy(server.name());
  ASSERT_TRUE(lazy.write(wireMessage(1, 0, "to be ignored")));
  while (listener.requests() < 1) std::this_thread::yield();
  EXPECT_TRUE(endsWithin(10s, [&] { server->disconnect(); }));
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{messageText("KTBNV0086_WRITE_FAILED", server.name(),
                                                                    systemText(ERROR_OPERATION_ABORTED))});
}

TEST(IPCServerStop, CancelsAWorkerBlockedInWritingToAClientThatNeverReads) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  RawClient lazy(server.name());
  // More replies than the pipe holds: the worker blocks in a write, and then so does this client.
  std::thread writer([&] {
    while (lazy.write(wireMessage(1, 0, std::string(1024, 'x')))) continue;
  });
  while (listener.requests() < 2) std::this_thread::yield();
  expectServes(server.name());
  EXPECT_TRUE(endsWithin(10s, [&] { server->disconnect(); }));
  writer.join();
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{messageText("KTBNV0086_WRITE_FAILED", server.name(),
                                                                    systemText(ERROR_OPERATION_ABORTED))});
}

TEST(IPCServerStop, HangsNowhereWhileClientsConnect) {
  setTestLimit(120s);
  EchoListener listener;
  std::atomic<bool> ended{false};
  const std::string name = uniqueService();
  std::vector<std::thread> clients;
  for (int i = 0; i < 3; ++i) {
    clients.emplace_back([&] {
      while (!ended) {
        try {
          TestClient client(name);
          if (client.ask(1, "x").getMessageId() == -1) continue;  // the server was stopped meanwhile
        } catch (const NYXException&) {
          std::this_thread::yield();  // not there, or stopped meanwhile
        }
      }
    });
  }
  for (int i = 0; i < 150; ++i) TestServer(listener, -1, name);
  ended = true;
  for (std::thread& client : clients) client.join();
  const TestServer server(listener, -1, name);
  expectServes(name);
}

}  // namespace
}  // namespace tessel::test
