#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <tessel/IPCMessage.h>
#include <tessel/NYXMessageTooShortException.h>

#include "support/Records.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

using Bytes = std::vector<unsigned char>;

// The received bytes of a message, followed by the four zero bytes of room that every reader has behind them.
class Received {
 public:
  Received& raw(const Bytes& more) {
    bytes_.insert(bytes_.end(), more.begin(), more.end());
    return *this;
  }
  Received& text(const std::string& more) { return raw(Bytes(more.begin(), more.end())); }
  Received& number(std::uint32_t value) {
    for (const unsigned shift : {24U, 16U, 8U, 0U}) bytes_.push_back(static_cast<unsigned char>(value >> shift));
    return *this;
  }
  // Cut or filled with zero bytes.
  Received& length(std::size_t size) {
    bytes_.resize(size);
    return *this;
  }
  std::size_t size() const { return bytes_.size(); }

  IPCMessage parse() const {
    Bytes buffer = bytes_;
    buffer.resize(buffer.size() + 4);
    return IPCMessage(buffer.data(), static_cast<unsigned>(bytes_.size()));
  }

 private:
  Bytes bytes_;
};

// Eye-catcher and header length.
Received start(std::uint32_t headerLength) { return Received().text("NYXI").number(headerLength); }

// A header of the usual form.
Received header(std::uint32_t id, std::uint32_t status, std::uint32_t textLength) {
  return start(8).number(id).number(status).number(textLength);
}

Bytes wireForm(const IPCMessage& message) {
  std::array<unsigned char, IPCMessage::MAX_MESSAGE_DATA_LEN> buffer{};
  int length = -1;
  EXPECT_EQ(message.getMessageBytes(buffer.data(), &length), buffer.data());
  return {buffer.begin(), buffer.begin() + length};
}

std::string tooShort(const Received& received) {
  return thrownBy<NYXMessageTooShortException>([&] { received.parse(); });
}

std::string invalid(const Received& received) {
  return thrownBy<NYXException>([&] { received.parse(); });
}

template <class... Inserts>
std::string text91(Inserts... inserts) {
  return messageText("KTBNV0091_MESSAGE_TOO_SHORT", std::to_string(inserts)...);
}
std::string text92() { return messageText("KTBNV0092_INVALID_EYE_CATCHER"); }
template <class... Inserts>
std::string text93(Inserts... inserts) {
  return messageText("KTBNV0093_MESSAGE_TOO_SHORT", std::to_string(inserts)...);
}
template <class... Inserts>
std::string text94(Inserts... inserts) {
  return messageText("KTBNV0094_MESSAGE_TOO_SHORT", std::to_string(inserts)...);
}
template <class... Inserts>
std::string text95(Inserts... inserts) {
  return messageText("KTBNV0095_MESSAGE_TEXT_TOO_LONG", std::to_string(inserts)...);
}

TEST(IPCMessage, HasTheDocumentedConstants) {
  static_assert(IPCMessage::STATUS_SUCCESS == 0 && IPCMessage::MessageStatus::SUCCESS == 0);
  static_assert(IPCMessage::STATUS_EXCEPTION == 1 && IPCMessage::MessageStatus::EXCEPTION == 1);
  static_assert(IPCMessage::STATUS_TIMEOUT == 2 && IPCMessage::MessageStatus::TIMEOUT == 2);
  static_assert(IPCMessage::STATUS_WARNING == 3 && IPCMessage::MessageStatus::WARNING == 3);
  static_assert(IPCMessage::MAX_MESSAGE_TEXT_LEN == 1024);
  static_assert(IPCMessage::MAX_MESSAGE_DATA_LEN == 1044);
}

TEST(IPCMessage, ByDefaultIsALostServersAnswer) {
  const IPCMessage message;
  EXPECT_EQ(message.getMessageId(), -1);
  EXPECT_EQ(message.getMessageStatus(), 0);
  EXPECT_EQ(message.getMessageText(), "");
}

TEST(IPCMessage, KeepsIdStatusAndText) {
  const IPCMessage request(5, "abc");
  EXPECT_EQ(request.getMessageId(), 5);
  EXPECT_EQ(request.getMessageStatus(), IPCMessage::STATUS_SUCCESS);
  EXPECT_EQ(request.getMessageText(), "abc");
  const IPCMessage reply(6, IPCMessage::STATUS_WARNING, "def");
  EXPECT_EQ(reply.getMessageId(), 6);
  EXPECT_EQ(reply.getMessageStatus(), 3);
  EXPECT_EQ(reply.getMessageText(), "def");
}

TEST(IPCMessage, IsWrittenBigEndian) {
  EXPECT_EQ(wireForm(IPCMessage(5, "abc")),
            (Bytes{0x4E, 0x59, 0x58, 0x49, 0, 0, 0, 8, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 3, 0x61, 0x62, 0x63}));
  EXPECT_EQ(wireForm(IPCMessage(0x01020304, 0x05060708, "")),
            (Bytes{0x4E, 0x59, 0x58, 0x49, 0, 0, 0, 8, 1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0}));
}

TEST(IPCMessage, WritesNegativeNumbersInTwosComplement) {
  const Bytes bytes = wireForm(IPCMessage(-1, -2, ""));
  EXPECT_EQ(Bytes(bytes.begin() + 8, bytes.begin() + 16), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}));
}

TEST(IPCMessage, ReadsNegativeNumbersBack) {
  const IPCMessage message = header(0xFFFFFFFF, 0x80000000, 0).parse();
  EXPECT_EQ(message.getMessageId(), -1);
  EXPECT_EQ(message.getMessageStatus(), std::numeric_limits<std::int32_t>::min());
}

TEST(IPCMessage, CarriesEveryByteValue) {
  std::string every;
  for (int i = 0; i < 256; ++i) every += static_cast<char>(i);
  const Bytes bytes = wireForm(IPCMessage(1, every));
  ASSERT_EQ(bytes.size(), 276U);
  EXPECT_EQ(Received().raw(bytes).parse().getMessageText(), every);
}

TEST(IPCMessage, CutsALongTextToItsFirst1024Bytes) {
  const std::string text = std::string(1023, 'a') + "b" + std::string(976, 'c');
  const IPCMessage message(1, text);
  EXPECT_EQ(message.getMessageText(), std::string(1023, 'a') + "b");
  const Bytes bytes = wireForm(message);
  ASSERT_EQ(bytes.size(), 1044U);
  EXPECT_EQ(Bytes(bytes.begin() + 16, bytes.begin() + 20), (Bytes{0, 0, 4, 0}));
  EXPECT_EQ(bytes.back(), 'b');
  EXPECT_EQ(IPCMessage(1, 0, text).getMessageText().size(), 1024U);
}

TEST(IPCMessage, TracesATruncationOnly) {
  const TraceScope trace("IPCMessage=MODERATE");
  const RecordingHandler log("IPCMessage");
  const IPCMessage whole(1, std::string(1024, 'a'));
  EXPECT_TRUE(recordsOf(log, LogRecordType::DATA).empty());
  const IPCMessage cut(1, std::string(1025, 'a'));
  const auto data = recordsOf(log, LogRecordType::DATA);
  ASSERT_EQ(data.size(), 1U);
  EXPECT_EQ(data[0].level, LogLevel::FINER);
  EXPECT_THAT(data[0].message, testing::HasSubstr("[Message truncated]"));
}

TEST(IPCMessage, CopiesEverything) {
  const IPCMessage original(7, 2, "text");
  const IPCMessage copy(original);
  IPCMessage assigned;
  assigned = original;
  EXPECT_EQ(wireForm(copy), wireForm(original));
  EXPECT_EQ(wireForm(assigned), wireForm(original));
}

TEST(IPCMessage, PrintsItsFields) {
  std::ostringstream text;
  text << IPCMessage(-5, 1, "some words");
  EXPECT_EQ(text.str(), "IPCMessage id:-5 status:1 text :some words");
}

TEST(IPCMessage, ParsesTheShortestMessage) {
  const Received received = header(9, 1, 0);
  ASSERT_EQ(received.size(), 20U);
  const IPCMessage message = received.parse();
  EXPECT_EQ(message.getMessageId(), 9);
  EXPECT_EQ(message.getMessageStatus(), 1);
  EXPECT_EQ(message.getMessageText(), "");
}

TEST(IPCMessage, ParsesTheLongestMessage) {
  const Received received = header(9, 1, 1024).text(std::string(1024, 'z'));
  ASSERT_EQ(received.size(), 1044U);
  EXPECT_EQ(received.parse().getMessageText(), std::string(1024, 'z'));
}

TEST(IPCMessage, IgnoresWhatFollowsTheText) {
  EXPECT_EQ(header(1, 0, 3).text("abcdef").parse().getMessageText(), "abc");
  EXPECT_EQ(header(1, 0, 3).text("abc").length(3000).parse().getMessageText(), "abc");
}

TEST(IPCMessage, FewerThanEightBytesAreTooShort) {
  for (std::size_t n = 0; n < 8; ++n) EXPECT_EQ(tooShort(header(1, 0, 0).length(n)), text91(n)) << n;
}

TEST(IPCMessage, SevenBytesAreTooShortWhateverTheyAre) { EXPECT_EQ(tooShort(Received().text("ABCDEFG")), text91(7)); }

TEST(IPCMessage, EightBytesWithAnotherEyeCatcherAreInvalid) {
  for (const char* wrong : {"XYXI", "NXXI", "NYYI", "NYXX", "nyxi"}) {
    EXPECT_EQ(invalid(Received().text(wrong).number(0)), text92()) << wrong;
  }
}

TEST(IPCMessage, AMessageThatEndsInItsHeaderIsTooShort) {
  for (std::size_t n = 8; n < 16; ++n) EXPECT_EQ(tooShort(header(1, 0, 0).length(n)), text93(n, 16)) << n;
}

TEST(IPCMessage, AMessageThatEndsInItsTextLengthIsTooShort) {
  for (std::size_t n = 16; n < 20; ++n) EXPECT_EQ(tooShort(header(1, 0, 0).length(n)), text94(n, 20)) << n;
}

TEST(IPCMessage, AMessageThatEndsInItsTextIsTooShort) {
  EXPECT_EQ(tooShort(header(1, 0, 3)), text94(20, 23));
  EXPECT_EQ(tooShort(header(1, 0, 3).text("ab")), text94(22, 23));
}

TEST(IPCMessage, AHeaderLengthOfZeroMeansNoIdAndNoStatus) {
  const IPCMessage message = start(0).number(2).text("ab").parse();
  EXPECT_EQ(message.getMessageId(), 0);
  EXPECT_EQ(message.getMessageStatus(), 0);
  EXPECT_EQ(message.getMessageText(), "ab");
}

TEST(IPCMessage, AHeaderLengthOfZeroCanEndBeforeTheTextLength) {
  for (std::size_t n = 8; n < 12; ++n) EXPECT_EQ(tooShort(start(0).length(n)), text94(n, 12)) << n;
}

TEST(IPCMessage, AHeaderShorterThanAnIdHasNone) {
  for (std::uint32_t size = 1; size < 4; ++size) {
    const IPCMessage message = start(size).raw(Bytes(size, 0x7F)).number(1).text("x").length(20).parse();
    EXPECT_EQ(message.getMessageId(), 0) << size;
    EXPECT_EQ(message.getMessageStatus(), 0) << size;
    EXPECT_EQ(message.getMessageText(), "x") << size;
  }
}

TEST(IPCMessage, AHeaderShorterThanAStatusHasTheIdOnly) {
  for (std::uint32_t size = 4; size < 8; ++size) {
    const IPCMessage message = start(size).number(77).raw(Bytes(size - 4, 0x7F)).number(1).text("x").parse();
    EXPECT_EQ(message.getMessageId(), 77) << size;
    EXPECT_EQ(message.getMessageStatus(), 0) << size;
    EXPECT_EQ(message.getMessageText(), "x") << size;
  }
}

TEST(IPCMessage, SkipsWhatALongerHeaderHolds) {
  const IPCMessage message = start(100).number(77).number(3).raw(Bytes(92, 0x7F)).number(2).text("xy").parse();
  EXPECT_EQ(message.getMessageId(), 77);
  EXPECT_EQ(message.getMessageStatus(), 3);
  EXPECT_EQ(message.getMessageText(), "xy");
}

TEST(IPCMessage, ALongHeaderThatIsNotThereIsTooShort) {
  EXPECT_EQ(tooShort(start(100).number(77).number(3).number(0)), text93(20, 108));
}

TEST(IPCMessage, WritesTheUsualHeaderWhateverItRead) {
  const IPCMessage message = start(100).number(5).number(0).raw(Bytes(92, 0x7F)).number(3).text("abc").parse();
  EXPECT_EQ(wireForm(message), wireForm(IPCMessage(5, "abc")));
}

TEST(IPCMessage, ATextLengthAbove1024IsTooLong) {
  EXPECT_EQ(invalid(header(1, 0, 1025).length(20 + 1025)), text95(1025, 1024));
  EXPECT_EQ(invalid(header(1, 0, 2000).length(3000)), text95(2000, 1024));
}

TEST(IPCMessage, ALongTextInAShortBufferIsTooShort) {
  EXPECT_EQ(tooShort(header(1, 0, 1025).length(1044)), text94(1044, 1045));
}

TEST(IPCMessage, ATextLengthNear4GigabytesWrapsAndIsTooLong) {
  EXPECT_EQ(tooShort(header(1, 0, 0xFFFFFFEB)), text94(20, 0xFFFFFFFF));
  EXPECT_EQ(invalid(header(1, 0, 0xFFFFFFEC)), text95(0xFFFFFFEC, 1024));
  EXPECT_EQ(invalid(header(1, 0, 0xFFFFFFFF)), text95(0xFFFFFFFF, 1024));
}

// The offset of the text length wraps: it lies in the first bytes of the message itself.
TEST(IPCMessage, AHeaderLengthNear4GigabytesHasItsDefinedAnswer) {
  const auto message = [](std::uint32_t headerLength) { return start(headerLength).number(1).number(0).number(0); };
  EXPECT_EQ(tooShort(message(0xFFFFFFF7)), text93(20, 0xFFFFFFFF));
  EXPECT_EQ(tooShort(message(0xFFFFFFF8)), text94(20, 0x4E59584D));
  EXPECT_EQ(tooShort(message(0xFFFFFFF9)), text94(20, 0x59584A04));
  EXPECT_EQ(tooShort(message(0xFFFFFFFA)), text94(20, 0x584A0005));
  EXPECT_EQ(tooShort(message(0xFFFFFFFB)), text94(20, 0x4A000006));
  EXPECT_EQ(invalid(message(0xFFFFFFFC)), text95(0xFFFFFFFC, 1024));
  EXPECT_EQ(tooShort(message(0xFFFFFFFD)), text94(20, 0xFFFFFD09));
  EXPECT_EQ(tooShort(message(0xFFFFFFFE)), text94(20, 0xFFFE000A));
  EXPECT_EQ(tooShort(message(0xFFFFFFFF)), text94(20, 0xFF00000B));
}

TEST(IPCMessage, AWrappingHeaderOfEightBytesReadsNothingBehindThem) {
  EXPECT_EQ(tooShort(start(0xFFFFFFF8)), text94(8, 0x4E59584D));
  EXPECT_EQ(tooShort(start(0xFFFFFFFF)), text94(8, 0xFF00000B));
}

TEST(IPCMessage, AFullBufferOfHeaderLooksAtTheFourBytesBehindIt) {
  EXPECT_EQ(tooShort(start(1036).length(1044)), text94(1044, 1048));
}

TEST(IPCMessage, TracesTheThrow) {
  const TraceScope trace("IPCMessage=FLOW");
  const RecordingHandler log("IPCMessage");
  tooShort(Received().text("NYX"));
  EXPECT_EQ(recordsOf(log, LogRecordType::THROWING, "IPCMessage").size(), 1U);
}

}  // namespace
}  // namespace tessel::test
