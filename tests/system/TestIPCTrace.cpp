// What a request leaves in the trace on its way.
#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <thread>

#include <tessel/IPCServerImpl.h>

#include "support/EchoListener.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Records.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

// The data points of one class from now on, each as its arguments in brackets.
class TracedData {
 public:
  explicit TracedData(const std::string& className) : trace_(className + "=MODERATE"), handler_(className) {}

  Texts texts() const {
    Texts texts;
    for (const Recorded& record : recordsOf(handler_, LogRecordType::DATA)) {
      EXPECT_EQ(record.level, LogLevel::FINER);
      texts.push_back(record.message.substr(record.message.find('[')));
    }
    return texts;
  }

  bool has(const std::string& text) const {
    const Texts all = texts();
    return std::find(all.begin(), all.end(), text) != all.end();
  }

 private:
  TraceScope trace_;
  RecordingHandler handler_;
};

TEST(IPCTrace, ListenerTellsEachStepOfItsLoop) {
  EchoListener listener;
  const TracedData data("IPCClientConnectionListener");
  const TestServer server(listener);
  EXPECT_EQ(TestClient(server.name()).ask(1, "x").getMessageText(), "x");
  server->disconnect();
  EXPECT_EQ(data.texts(),
            (Texts{"[Waiting for a client to connect]", "[Client connected, creating a processing thread.]",
                   "[Waiting for a client to connect]", "[Ended. Removing all currently connected client threads]"}));
}

TEST(IPCTrace, WorkerTellsAFailedRequestAndTheEndOfItsClient) {
  FailingListener listener;
  const TestServer server(listener);
  const TracedData data("IPCClientRunnable");
  {
    TestClient client(server.name());
    EXPECT_EQ(client.ask(1, "x").getMessageStatus(), IPCMessage::MessageStatus::EXCEPTION);
  }
  while (data.texts().size() < 2) std::this_thread::yield();  // the worker sees its client leave
  server->disconnect();
  EXPECT_EQ(data.texts(), (Texts{"[message processing failed] [class NYXException: boom]", "[client disconnected]"}));
}

TEST(IPCTrace, ClientTellsAReplyThatIsThereAtOnce) {
  const std::string name = uniqueService();
  RawServer pipe(name);
  Event replied;
  std::thread server([&] {
    pipe.accept();
    pipe.write(wireMessage(5, 0, "abc"));
    replied.set();
    pipe.read();
  });
  const TracedData data("IPCClientImpl");
  {
    const TestClient client(name);
    EXPECT_TRUE(replied.wait());
    EXPECT_EQ(shown(client->sendMessage(IPCMessage(1, "x"), 250)), "IPCMessage id:5 status:0 text :abc");
  }
  server.join();
  Texts texts = data.texts();
  ASSERT_FALSE(texts.empty());
  EXPECT_THAT(texts.front(), testing::StartsWith("[CreateFile successful handle is: ] [0x"));
  texts.erase(texts.begin());
  EXPECT_EQ(texts, (Texts{"[Timeout changed to ] [250]", "[Message sent to server, receiving reply]", "[Read Data]",
                          "[Length of data read] [23]", "[Message Text Length] [3]", "[Total message Length] [23]"}));
}

TEST(IPCTrace, ClientTellsEachPollOfALateReply) {
  const std::string name = uniqueService();
  RawServer pipe(name);
  const TracedData data("IPCClientImpl");
  std::thread server([&] {
    pipe.accept();
    pipe.read();
    while (!data.has("[ERROR_IO_INCOMPLETE]")) std::this_thread::yield();
    pipe.write(wireMessage(5, 0, "abc"));
  });
  {
    const TestClient client(name);
    client->sendMessage(IPCMessage(1, "x"), 1000);
  }
  server.join();
  Texts texts = data.texts();
  ASSERT_GE(texts.size(), 3U);
  texts.erase(texts.begin(), texts.begin() + 3);
  EXPECT_EQ(texts, (Texts{"[ERROR_IO_PENDING]", "[ERROR_IO_PENDING. Sleep and retry]", "[ERROR_IO_INCOMPLETE]",
                          "[ERROR_IO_PENDING. Sleep and retry]", "[Asynchrous read completed]",
                          "[Length of data read] [23]", "[Message Text Length] [3]", "[Total message Length] [23]"}));
}

TEST(IPCTrace, ServerShowsItsNameLimitGroupAndState) {
  EchoListener listener;
  const std::string name = uniqueService();
  IPCServerImpl server(name, listener, 3, "operators");
  const auto text = [&server] {
    std::ostringstream stream;
    stream << server;
    return stream.str();
  };
  const std::string start = "IPCServer serviceName:" + name + " maxConnections:3 adminGroupName:operators connected:";
  EXPECT_EQ(text(), start + "false");
  server.connect();
  EXPECT_EQ(text(), start + "true");
  server.disconnect();
  EXPECT_EQ(text(), start + "false");
}

}  // namespace
}  // namespace tessel::test
