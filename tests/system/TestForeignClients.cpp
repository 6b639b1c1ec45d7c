// Clients that keep to no format: what they get, and that the server then answers a good one.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

// A failure as the server answers it.
std::string failure(const std::string& message) { return wireMessage(0, 1, message); }

class ForeignClients : public testing::Test {
 protected:
  // The connection answers a good request afterwards, and so does the server.
  void expectAnswer(const std::string& request, const std::string& reply) {
    RawClient client(server_.name());
    EXPECT_EQ(client.ask(request), reply);
    EXPECT_EQ(client.ask(wireMessage(9, 0, "good")), wireMessage(9, 0, "good"));
    expectServes(server_.name());
  }

  void TearDown() override {
    expectServes(server_.name());
    server_->disconnect();
    EXPECT_EQ(recorder_.errors(), expectedErrors_);
  }

  std::string readFailure(unsigned long error) const {
    return messageText("KTBNV0085_READ_FAILED", server_.name(), systemText(error));
  }

  EventRecorder recorder_;
  EchoListener listener_;
  TestServer server_{listener_};
  std::vector<std::string> expectedErrors_;
};

TEST_F(ForeignClients, GetTheReplyByteForByte) {
  expectAnswer(wireMessage(5, 0, "abc"), std::string("NYXI\0\0\0\x08\0\0\0\x05\0\0\0\0\0\0\0\x03"
                                                     "abc",
                                                     23));
}

TEST_F(ForeignClients, MayLeaveWithoutAWord) {
  for (int i = 0; i < 20; ++i) {
    RawClient client(server_.name());
    EXPECT_EQ(client.ask(wireMessage(1, 0, "x")), wireMessage(1, 0, "x"));
  }
}

TEST_F(ForeignClients, MayLeaveWithoutTheirReply) {
  for (int i = 0; i < 20; ++i) {
    RawClient client(server_.name());
    EXPECT_TRUE(client.write(wireMessage(1, 0, "x")));
    while (listener_.requests() == i) std::this_thread::yield();
  }
  expectServes(server_.name());
  server_->disconnect();
  // The client may be gone before its reply is written.
  const std::string writeFailed = messageText("KTBNV0086_WRITE_FAILED", server_.name(), systemText(ERROR_NO_DATA));
  for (const std::string& error : recorder_.errors()) EXPECT_EQ(error, writeFailed);
  expectedErrors_ = recorder_.errors();
  server_->connect();
}

TEST_F(ForeignClients, SendSevenBytes) {
  expectAnswer(std::string("NYXI\0\0\0", 7), failure(messageText("KTBNV0091_MESSAGE_TOO_SHORT", "7")));
}

TEST_F(ForeignClients, SendHalfAHeader) {
  expectAnswer(wireStart(8) + "xx", failure(messageText("KTBNV0093_MESSAGE_TOO_SHORT", "10", "16")));
}

TEST_F(ForeignClients, SendAHeaderWithoutItsTextLength) {
  expectAnswer(wireStart(8) + wireNumber(3) + wireNumber(0),
               failure(messageText("KTBNV0094_MESSAGE_TOO_SHORT", "16", "20")));
}

TEST_F(ForeignClients, SendAWrongEyeCatcher) {
  expectAnswer("NYXJ" + wireMessage(3, 0, "abc").substr(4), failure(messageText("KTBNV0092_INVALID_EYE_CATCHER")));
}

TEST_F(ForeignClients, SendAHeaderOfNoBytes) {
  expectAnswer(wireStart(0) + wireNumber(3) + "abc", wireMessage(0, 0, "abc"));
}

TEST_F(ForeignClients, SendAHeaderOfFourBytes) {
  expectAnswer(wireStart(4) + wireNumber(77) + wireNumber(3) + "abc", wireMessage(77, 0, "abc"));
}

TEST_F(ForeignClients, SendAHeaderOfAHundredBytes) {
  const std::string block = wireNumber(77) + wireNumber(3) + std::string(92, '?');
  expectAnswer(wireStart(100) + block + wireNumber(3) + "abc", wireMessage(77, 3, "abc"));
}

TEST_F(ForeignClients, SendAHeaderThatWrapsToTheStart) {
  // The text length is then read from the eye-catcher: 0x4E595849.
  expectAnswer(wireStart(0xFFFFFFF8) + std::string(12, '\0'),
               failure(messageText("KTBNV0094_MESSAGE_TOO_SHORT", "20", std::to_string(0x4E595849U + 4))));
}

TEST_F(ForeignClients, SendAHeaderThatLeavesNoRoomForTheTextLength) {
  // A full message: the length would stand in the four bytes behind it, which are zero.
  expectAnswer(wireStart(1036) + wireNumber(77) + wireNumber(0) + std::string(1028, '?'),
               failure(messageText("KTBNV0094_MESSAGE_TOO_SHORT", "1044", "1048")));
}

TEST_F(ForeignClients, SendTheLongestText) {
  const std::string request = wireMessage(3, 0, std::string(1024, 'x'));
  EXPECT_EQ(request.size(), 1044U);
  expectAnswer(request, request);
}

TEST_F(ForeignClients, SendATextThatIsTooLong) {
  // A short header leaves room for all of it.
  expectAnswer(wireStart(0) + wireNumber(1025) + std::string(1025, 'x'),
               failure(messageText("KTBNV0095_MESSAGE_TEXT_TOO_LONG", "1025", "1024")));
}

TEST_F(ForeignClients, SendATextLengthThatWraps) {
  expectAnswer(wireMessage(3, 0, "", 0xFFFFFFFF),
               failure(messageText("KTBNV0095_MESSAGE_TEXT_TOO_LONG", "4294967295", "1024")));
}

TEST_F(ForeignClients, SendAMessageOfOneByteTooMany) {
  // Answered from its first 1044 bytes; the byte left over counts as a message of its own.
  expectedErrors_ = {readFailure(ERROR_MORE_DATA)};
  RawClient client(server_.name());
  EXPECT_EQ(client.ask(wireMessage(3, 0, std::string(1025, 'x'))),
            failure(messageText("KTBNV0094_MESSAGE_TOO_SHORT", "1044", "1045")));
  EXPECT_EQ(client.read(), failure(messageText("KTBNV0091_MESSAGE_TOO_SHORT", "1")));
  EXPECT_EQ(client.ask(wireMessage(9, 0, "good")), wireMessage(9, 0, "good"));
}

TEST_F(ForeignClients, SendAMessageOfFiveThousandBytes) {
  // Five reads, five replies: 4 * 1044 bytes and the 824 that are left. What lies behind the text is ignored.
  expectedErrors_.assign(4, readFailure(ERROR_MORE_DATA));
  const std::string request = wireMessage(3, 0, "abc");
  RawClient client(server_.name());
  EXPECT_EQ(client.ask(request + std::string(5000 - request.size(), 'y')), request);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(client.read(), failure(messageText("KTBNV0092_INVALID_EYE_CATCHER")));
  }
  EXPECT_EQ(client.ask(wireMessage(9, 0, "good")), wireMessage(9, 0, "good"));
}

TEST_F(ForeignClients, SendAMessageOfNoBytesAndAreDropped) {
  expectedErrors_ = {readFailure(NO_ERROR)};
  RawClient client(server_.name());
  EXPECT_TRUE(client.write(""));
  ASSERT_TRUE(recorder_.waitFor(readFailure(NO_ERROR)));
  // The next clients let the server put the ended worker away.
  while (client.isOpen()) {
    expectServes(server_.name());
    DWORD available = 0;
    if (!PeekNamedPipe(client.handle(), nullptr, 0, nullptr, &available, nullptr)) client.close();
  }
}

TEST_F(ForeignClients, SendWithoutReadingTheReplies) {
  RawClient client(server_.name());
  EXPECT_TRUE(client.write(wireMessage(1, 0, "one")));
  expectServes(server_.name());
  EXPECT_EQ(client.read(), wireMessage(1, 0, "one"));
}

TEST_F(ForeignClients, SendSeveralRequestsAtOnce) {
  RawClient client(server_.name());
  EXPECT_TRUE(client.write(wireMessage(1, 0, "one")));
  EXPECT_TRUE(client.write(wireMessage(2, 0, "two")));
  EXPECT_EQ(client.read(), wireMessage(1, 0, "one"));
  EXPECT_EQ(client.read(), wireMessage(2, 0, "two"));
}

TEST_F(ForeignClients, ComeTwoHundredAtOnce) {
  constexpr int kClients = 200;
  std::latch connected(kClients);
  std::atomic<int> answered{0};
  std::vector<std::thread> clients;
  for (int i = 0; i < kClients; ++i) {
    clients.emplace_back([&, i] {
      RawClient client(server_.name());
      connected.arrive_and_wait();  // nobody asks before all are connected
      const std::string request = wireMessage(static_cast<std::uint32_t>(i), 0, "x");
      if (client.ask(request) == request) ++answered;
    });
  }
  for (std::thread& client : clients) client.join();
  EXPECT_EQ(answered, kClients);
}

TEST_F(ForeignClients, ConnectAndLeaveAtOnce) {
  for (int i = 0; i < 40; ++i) RawClient(server_.name()).close();
  expectServes(server_.name());
  server_->disconnect();
  // A client that is gone before the server looks for it makes the accept fail.
  const std::string acceptFailed =
      messageText("KTBNV0089_CONNECT_NAMED_PIPE_FAILED", server_.name(), systemText(ERROR_NO_DATA));
  for (const std::string& error : recorder_.errors()) EXPECT_EQ(error, acceptFailed);
  expectedErrors_ = recorder_.errors();
  server_->connect();
}

TEST(ForeignClientsOfAFullServer, NeverFindItsNameFree) {
  EventRecorder recorder;
  EchoListener listener;
  const TestServer server(listener, 0);  // every client is dropped
  const std::string path = "\\\\.\\pipe\\" + server.name();
  int opened = 0;
  while (opened < 40) {
    const HANDLE pipe = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) {
      ++opened;
      CloseHandle(pipe);
    } else {
      ASSERT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PIPE_BUSY));
    }
  }
}

}  // namespace
}  // namespace tessel::test
