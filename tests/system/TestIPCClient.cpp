// The client against a server of the library.
#include <gtest/gtest.h>

#include <sstream>

#include <tessel/IPCNotFoundException.h>
#include <tessel/NYXException.h>

#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/Handles.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

std::unique_ptr<IPCClient> newClient(const std::string& name) {
  return std::unique_ptr<IPCClient>(IPCClient::newInstance(name, NativeProperties()));
}

TEST(IPCClient, FailsAtOnceWithoutAServer) {
  const std::string name = uniqueService();
  const auto client = newClient(name);
  EXPECT_EQ(thrownBy<IPCNotFoundException>([&] { client->connect(); }),
            messageText("KTBNV0066_OPEN_ERROR", name, systemText(ERROR_FILE_NOT_FOUND)));
}

TEST(IPCClient, RefusesToConnectTwiceAndWorksOn) {
  EchoListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  EXPECT_EQ(thrownBy<NYXException>([&] { client->connect(); }), messageText("KTBNV0065_ALREADY_CONNECTED"));
  EXPECT_EQ(client.ask(1, "x").getMessageText(), "x");
}

TEST(IPCClient, MayDisconnectTwiceAndBeforeItConnected) {
  EchoListener listener;
  const TestServer server(listener);
  const auto client = newClient(server.name());
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  client->disconnect();
  EXPECT_EQ(recorder.traced("Pipe already closed."), 1);
  client->connect();
  client->disconnect();
  EXPECT_EQ(recorder.traced("Pipe already closed."), 1);
  client->disconnect();
  EXPECT_EQ(recorder.traced("Pipe already closed."), 2);
}

TEST(IPCClient, ConnectsAgainAfterADisconnect) {
  EchoListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  client->disconnect();
  client->connect();
  EXPECT_EQ(client.ask(1, "again").getMessageText(), "again");
}

TEST(IPCClient, RefusesToSendUnlessConnected) {
  EchoListener listener;
  const TestServer server(listener);
  const auto client = newClient(server.name());
  const auto send = [&] { client->sendMessage(IPCMessage(1, "x"), 1); };
  EXPECT_EQ(thrownBy<NYXException>(send), messageText("KTBNV0062_NOT_CONNECTED"));
  client->connect();
  client->disconnect();
  EXPECT_EQ(thrownBy<NYXException>(send), messageText("KTBNV0062_NOT_CONNECTED"));
}

TEST(IPCClient, CarriesTextsOfEveryLengthAndByte) {
  EchoListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  for (const std::size_t length : {0U, 1U, 255U, 1023U, 1024U}) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += static_cast<char>(i);
    EXPECT_EQ(client.ask(1, text).getMessageText(), text);
  }
}

TEST(IPCClient, SendsTheFirst1024BytesOfALongerText) {
  EchoListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  EXPECT_EQ(client.ask(1, std::string(2000, 'x')).getMessageText(), std::string(1024, 'x'));
}

TEST(IPCClient, ReturnsTheReplyThatReportsAFailure) {
  FailingListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  EXPECT_EQ(shown(client.ask(7, "x")), "IPCMessage id:7 status:1 text :boom");
}

TEST(IPCClient, TracesThePollingIntervalInUse) {
  EchoListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  const auto intervalFor = [&](long timeout) {
    client->sendMessage(IPCMessage(1, "x"), timeout);
    return recorder.tracedValue("Timeout changed to ");
  };
  EXPECT_EQ(intervalFor(-1), "1");
  EXPECT_EQ(intervalFor(-2), "1");
  EXPECT_EQ(intervalFor(-2147483647L - 1), "1");
  EXPECT_EQ(intervalFor(0), "0");
  EXPECT_EQ(intervalFor(250), "250");
}

TEST(IPCClient, ReturnsAReplyThatComesBetweenTheSecondAndTheThirdPollAfterTheThird) {
  BlockingListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  std::future<IPCMessage> reply =
      std::async(std::launch::async, [&] { return client->sendMessage(IPCMessage(7, "late"), 500); });
  ASSERT_TRUE(recorder.waitForTraced("ERROR_IO_INCOMPLETE", 2));
  listener.release();
  EXPECT_EQ(shown(reply.get()), "IPCMessage id:7 status:0 text :late");
  EXPECT_EQ(recorder.traced("ERROR_IO_PENDING. Sleep and retry"), 3);
  EXPECT_EQ(recorder.traced("ERROR_IO_INCOMPLETE"), 2);
  EXPECT_EQ(recorder.traced("Asynchrous read completed"), 1);
}

TEST(IPCClient, PollsUntilTheReplyArrives) {
  BlockingListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  std::future<IPCMessage> reply =
      std::async(std::launch::async, [&] { return client->sendMessage(IPCMessage(7, "late"), -1); });
  ASSERT_TRUE(recorder.waitForTraced("ERROR_IO_INCOMPLETE", 50));
  listener.release();
  EXPECT_EQ(shown(reply.get()), "IPCMessage id:7 status:0 text :late");
  EXPECT_EQ(recorder.traced("Timeout changed to "), 1);
}

TEST(IPCClient, ShowsItsService) {
  std::ostringstream text;
  text << *newClient("some-service");
  EXPECT_EQ(text.str(), "IPCClient serviceName:some-service");
}

TEST(IPCClient, DoesNotCloseItsPipeWhenItIsDestroyed) {
  EchoListener listener;
  const TestServer server(listener);
  expectServes(server.name());
  auto client = newClient(server.name());
  client->connect();
  client->sendMessage(IPCMessage(1, "x"), 1);
  const HandleBaseline handles;
  client.reset();
  EXPECT_EQ(handles.growth(), 0) << "the pipe handle must stay open";
}

}  // namespace
}  // namespace tessel::test
