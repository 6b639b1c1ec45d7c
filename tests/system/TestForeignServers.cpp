// The client against servers that keep to no format.
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>

#include <tessel/NYXException.h>
#include <tessel/NYXMessageTooShortException.h>

#include "support/EchoListener.h"
#include "support/Event.h"
#include "support/EventRecorder.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

// A server of one connection whose behaviour is given.
class ForeignServer {
 public:
  explicit ForeignServer(std::function<void(RawServer&)> behaviour)
      : pipe_(name_), thread_([this, behaviour] {
          pipe_.accept();
          behaviour(pipe_);
        }) {}
  ~ForeignServer() { thread_.join(); }
  ForeignServer(const ForeignServer&) = delete;
  ForeignServer& operator=(const ForeignServer&) = delete;

  const std::string& name() const { return name_; }

 private:
  const std::string name_ = uniqueService();
  RawServer pipe_;
  std::thread thread_;
};

// Answers the first request with these messages, one after the other.
std::function<void(RawServer&)> answering(std::vector<std::string> replies) {
  return [replies](RawServer& pipe) {
    pipe.read();
    for (const std::string& reply : replies) pipe.write(reply);
  };
}

TEST(ForeignServers, GetTheRequestByteForByte) {
  std::string request;
  {
    ForeignServer server([&](RawServer& pipe) {
      request = pipe.read();
      pipe.write(wireMessage(5, 0, "ok"));
    });
    EXPECT_EQ(shown(TestClient(server.name()).ask(-1, "abc")), "IPCMessage id:5 status:0 text :ok");
  }
  EXPECT_EQ(request, wireMessage(0xFFFFFFFF, 0, "abc"));
}

TEST(ForeignServers, MaySendTheReplyInTwoMessages) {
  // Each message goes to the start of the buffer: the second one is what is parsed.
  ForeignServer server(answering({wireMessage(5, 0, "", 40), wireMessage(6, 0, "the whole text in the second")}));
  EXPECT_EQ(shown(TestClient(server.name()).ask(1, "x")),
            "IPCMessage id:6 status:0 text :the whole text in the second");
}

TEST(ForeignServers, MaySendTheTextInAMessageOfItsOwn) {
  // Complete by its size, but the second message alone is no message.
  ForeignServer server(answering({wireMessage(5, 0, "", 10), "0123456789"}));
  EXPECT_EQ(thrownBy<NYXException>([&] { TestClient(server.name()).ask(1, "x"); }),
            messageText("KTBNV0092_INVALID_EYE_CATCHER"));
}

TEST(ForeignServers, MaySendLessThanAHeader) {
  ForeignServer server(answering({"NYXI"}));
  EXPECT_EQ(thrownBy<NYXMessageTooShortException>([&] { TestClient(server.name()).ask(1, "x"); }),
            messageText("KTBNV0091_MESSAGE_TOO_SHORT", "4"));
}

TEST(ForeignServers, MaySendAShortHeaderThatIsComplete) {
  ForeignServer server(answering({wireStart(0) + wireNumber(3) + "abc"}));
  EXPECT_EQ(shown(TestClient(server.name()).ask(1, "x")), "IPCMessage id:0 status:0 text :abc");
}

TEST(ForeignServers, MaySendATextLengthThatWraps) {
  ForeignServer server(answering({wireMessage(5, 0, "", 0xFFFFFFFF)}));
  EXPECT_EQ(thrownBy<NYXException>([&] { TestClient(server.name()).ask(1, "x"); }),
            messageText("KTBNV0095_MESSAGE_TEXT_TOO_LONG", "4294967295", "1024"));
}

TEST(ForeignServers, MaySendAMessageOfNoBytes) {
  ForeignServer server(answering({""}));
  EXPECT_EQ(shown(TestClient(server.name()).ask(1, "x")), "IPCMessage id:-1 status:0 text :");
}

TEST(ForeignServers, MaySendMoreThanTheLongestMessageBeforeItIsReadFor) {
  // The reply is there before the request: the read fails at once.
  Event replied;
  ForeignServer server([&](RawServer& pipe) {
    pipe.write(wireMessage(5, 0, std::string(1024, 'x')) + "more");
    replied.set();
    pipe.read();
  });
  const TestClient client(server.name());
  ASSERT_TRUE(replied.wait());
  EXPECT_EQ(thrownBy<NYXException>([&] { client->sendMessage(IPCMessage(1, "x"), 1); }),
            messageText("KTBNV0064_READ_FAILED", server.name(), systemText(ERROR_MORE_DATA)));
}

TEST(ForeignServers, MaySendMoreThanTheLongestMessageToAWaitingClient) {
  // Parsed from its first 1044 bytes.
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  ForeignServer server([&](RawServer& pipe) {
    pipe.read();
    recorder.waitForTraced("ERROR_IO_PENDING");
    pipe.write(wireMessage(5, 0, std::string(1024, 'x')) + "more");
  });
  TestClient client(server.name());
  EXPECT_EQ(client.ask(1, "x").getMessageText(), std::string(1024, 'x'));
  EXPECT_EQ(recorder.tracedValue("Other Return code"), systemText(ERROR_MORE_DATA));
}

TEST(ForeignServers, MayLeaveWhileTheirClientWaits) {
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  ForeignServer server([&](RawServer& pipe) {
    pipe.read();
    recorder.waitForTraced("ERROR_IO_PENDING");
    pipe.close();
  });
  TestClient client(server.name());
  EXPECT_EQ(shown(client.ask(1, "x")), "IPCMessage id:-1 status:0 text :");
  EXPECT_EQ(recorder.tracedValue("Other Return code"), systemText(ERROR_BROKEN_PIPE));
}

TEST(ForeignServers, MayLeaveInTheMiddleOfAReply) {
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  ForeignServer server([&](RawServer& pipe) {
    pipe.read();
    pipe.write(wireMessage(5, 0, "", 10));
    recorder.waitForTraced("There is more data to read");
    pipe.close();
  });
  EXPECT_EQ(thrownBy<NYXException>([&] { TestClient(server.name()).ask(1, "x"); }),
            messageText("KTBNV0064_READ_FAILED", server.name(), systemText(ERROR_BROKEN_PIPE)));
}

TEST(ForeignServers, MayLeaveBeforeTheRequest) {
  Event closed;
  ForeignServer server([&](RawServer& pipe) {
    pipe.close();
    closed.set();
  });
  TestClient client(server.name());
  ASSERT_TRUE(closed.wait());
  EXPECT_EQ(thrownBy<NYXException>([&] { client.ask(1, "x"); }),
            messageText("KTBNV0063_WRITE_FAILED", server.name(), systemText(ERROR_NO_DATA)));
}

// The server takes the request and never answers; the read is under way or about to be.
void expectCancelled(long interval) {
  Event asked;
  Event cancelled;
  ForeignServer server([&](RawServer& pipe) {
    pipe.read();
    asked.set();
    cancelled.wait();
  });
  TestClient client(server.name());
  std::future<std::string> failure = std::async(std::launch::async, [&] {
    return thrownBy<NYXException>([&] { client->sendMessage(IPCMessage(1, "x"), interval); });
  });
  ASSERT_TRUE(asked.wait());
  client->cancel();
  EXPECT_EQ(failure.get(), messageText("KTBNV0064_READ_FAILED", server.name(), systemText(ERROR_OPERATION_ABORTED)));
  EXPECT_EQ(thrownBy<NYXException>([&] { client.ask(2, "y"); }), messageText("KTBNV0062_NOT_CONNECTED"));
  cancelled.set();
}

TEST(ForeignServers, LoseAClientWhoseExchangeIsCancelled) { expectCancelled(-1); }

// Were the interval slept through, the watchdog would speak.
TEST(ForeignServers, LoseAClientWhoseExchangeIsCancelledWithinALongInterval) { expectCancelled(86400000); }

TEST(ForeignServers, AreAskedAgainByACancelledClientThatConnectsAgain) {
  EchoListener listener;
  const TestServer server(listener);
  TestClient client(server.name());
  client->cancel();
  client->disconnect();
  client->connect();
  EXPECT_EQ(client.ask(1, "again").getMessageText(), "again");
}

}  // namespace
}  // namespace tessel::test
