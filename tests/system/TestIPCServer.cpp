// The server as its owner sees it: connect, disconnect, the limit of connections.
#include <gtest/gtest.h>

#include <tessel/IPCNotFoundException.h>
#include <tessel/IPCServerImpl.h>
#include <tessel/NYXException.h>

#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

// The capture among the errors; empty when there is none.
std::string captureIn(const EventRecorder& recorder) {
  for (const std::string& error : recorder.errors()) {
    if (error.compare(0, 10, "KTBNV0150E") == 0) return error;
  }
  return std::string();
}

TEST(IPCServer, AnswersTheRequestsOfAClientOneAfterTheOther) {
  EchoListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  EXPECT_EQ(shown(client.ask(1, "first")), "IPCMessage id:1 status:0 text :first");
  EXPECT_EQ(shown(client.ask(-2, "")), "IPCMessage id:-2 status:0 text :");
  EXPECT_EQ(listener.requests(), 2);
}

TEST(IPCServer, KeepsItsListener) {
  EchoListener listener;
  const std::unique_ptr<IPCServer> server(IPCServer::newInstance(uniqueService(), listener, -1, "operators"));
  EXPECT_EQ(&server->getListener(), &listener);
}

TEST(IPCServer, RefusesToConnectTwiceAndServesOn) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  EXPECT_EQ(thrownBy<NYXException>([&] { server->connect(); }), messageText("KTBNV0065_ALREADY_CONNECTED"));
  const std::string capture = captureIn(recorder);
  EXPECT_NE(capture.find("Class:      IPCServerImpl\n"), std::string::npos) << capture;
  EXPECT_NE(capture.find("Method:     connect\n"), std::string::npos) << capture;
  EXPECT_NE(capture.find("Probe:      FFDC_001\n"), std::string::npos) << capture;
  expectServes(server.name());
}

TEST(IPCServer, RefusesToDisconnectTwice) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener);
  server->disconnect();
  EXPECT_EQ(captureIn(recorder), "");
  EXPECT_EQ(thrownBy<NYXException>([&] { server->disconnect(); }), messageText("KTBNV0062_NOT_CONNECTED"));
  const std::string capture = captureIn(recorder);
  EXPECT_NE(capture.find("Method:     connect\n"), std::string::npos) << capture;
  EXPECT_NE(capture.find("Probe:      FFDC_002\n"), std::string::npos) << capture;
}

TEST(IPCServer, RefusesToDisconnectBeforeItConnected) {
  EchoListener listener;
  const std::unique_ptr<IPCServer> server(IPCServer::newInstance(uniqueService(), listener, -1));
  EXPECT_EQ(thrownBy<NYXException>([&] { server->disconnect(); }), messageText("KTBNV0062_NOT_CONNECTED"));
}

TEST(IPCServer, StartsAgainUnderItsName) {
  EchoListener listener;
  const TestServer server(listener);
  expectServes(server.name());
  server->disconnect();
  server->connect();
  expectServes(server.name());
}

TEST(IPCServer, FreesItsNameWhenItDisconnects) {
  EchoListener listener;
  const TestServer server(listener);
  server->disconnect();
  EXPECT_EQ(thrownBy<IPCNotFoundException>([&] { TestClient client(server.name()); }),
            messageText("KTBNV0066_OPEN_ERROR", server.name(), systemText(ERROR_FILE_NOT_FOUND)));
}

TEST(IPCServer, DisconnectsWhenItIsDestroyed) {
  EchoListener listener;
  const std::string name = uniqueService();
  { const TestServer server(listener, -1, name); }
  thrownBy<IPCNotFoundException>([&] { TestClient client(name); });
}

TEST(IPCServer, DropsTheSecondClientAtALimitOfOneAndReportsItOnce) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener, 1);
  TestClient first(server.name());
  EXPECT_EQ(first.ask(1, "a").getMessageText(), "a");

  RawClient second(server.name());
  EXPECT_TRUE(second.isOpen());
  EXPECT_EQ(second.read(), "");
  EXPECT_EQ(second.error(), static_cast<DWORD>(ERROR_PIPE_NOT_CONNECTED));

  EXPECT_EQ(first.ask(2, "b").getMessageText(), "b");
  server->disconnect();
  EXPECT_EQ(recorder.errors(),
            std::vector<std::string>{messageText("KTBNV0090_MAX_CONNECTIONS_EXCEEDED", server.name(), "1")});
}

TEST(IPCServer, ServesNobodyAtALimitOfZero) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener, 0);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(RawClient(server.name()).read(), "");
  server->disconnect();
  EXPECT_EQ(recorder.errors(),
            std::vector<std::string>(3, messageText("KTBNV0090_MAX_CONNECTIONS_EXCEEDED", server.name(), "0")));
}

TEST(IPCServer, ServesAnyNumberOfClientsWithoutALimit) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener, -1);
  std::vector<std::unique_ptr<TestClient>> clients;
  for (int i = 0; i < 40; ++i) clients.push_back(std::make_unique<TestClient>(server.name()));
  for (int i = 0; i < 40; ++i) EXPECT_EQ(clients[static_cast<std::size_t>(i)]->ask(i, "x").getMessageId(), i);
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCServer, TakesAClientBackAtOnceAlthoughItsLimitIsOne) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener, 1);
  for (int i = 0; i < 200; ++i) {
    TestClient client(server.name());
    ASSERT_EQ(client.ask(i, "back").getMessageId(), i);
  }
  EXPECT_EQ(recorder.errors(), std::vector<std::string>{});
}

TEST(IPCServer, ServesEachServiceByItsOwnListener) {
  EchoListener echo;
  FailingListener failing;
  const TestServer first(echo);
  const TestServer second(failing);
  EXPECT_EQ(shown(TestClient(first.name()).ask(7, "x")), "IPCMessage id:7 status:0 text :x");
  EXPECT_EQ(shown(TestClient(second.name()).ask(7, "x")), "IPCMessage id:7 status:1 text :boom");
}

// Answers with the text of what happens when the server is told to stop from inside a request.
class StoppingListener : public IPCListener {
 public:
  IPCMessage onMessage(const IPCMessage& request) override {
    try {
      server->disconnect();
    } catch (const NYXException& exception) {
      return IPCMessage(request.getMessageId(), "refused: " + exception.getMessage());
    }
    return IPCMessage(request.getMessageId(), "stopped");
  }

  IPCServer* server = nullptr;
};

TEST(IPCServer, CannotBeStoppedFromInsideARequest) {
  StoppingListener listener;
  const TestServer server(listener);
  listener.server = server.operator->();
  TestClient client(server.name());
  const std::string refused = client.ask(1, "stop").getMessageText();
  EXPECT_EQ(refused.compare(0, 9, "refused: "), 0) << refused;
  EXPECT_EQ(client.ask(2, "stop").getMessageText(), refused);
  EXPECT_EQ(TestClient(server.name()).ask(3, "stop").getMessageText(), refused);
  server->disconnect();
}

}  // namespace
}  // namespace tessel::test
