// Whatever comes over the pipe either is refused or is a message that survives being sent on.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <tessel/IPCMessage.h>
#include <tessel/NYXException.h>

namespace {

// The room that the parser may look at behind a message; not a byte more, so that a sanitizer sees a longer look.
constexpr std::size_t kReadAhead = 4;

void require(bool holds) {
  if (!holds) std::abort();
}

void checkSentOn(const tessel::IPCMessage& message) {
  require(message.getMessageText().size() <= tessel::IPCMessage::MAX_MESSAGE_TEXT_LEN);
  std::array<unsigned char, tessel::IPCMessage::MAX_MESSAGE_DATA_LEN + kReadAhead> buffer{};
  int length = 0;
  require(message.getMessageBytes(buffer.data(), &length) == buffer.data());
  require(length == static_cast<int>(20 + message.getMessageText().size()));
  const tessel::IPCMessage copy(buffer.data(), static_cast<unsigned>(length));
  require(copy.getMessageId() == message.getMessageId());
  require(copy.getMessageStatus() == message.getMessageStatus());
  require(copy.getMessageText() == message.getMessageText());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<unsigned char> bytes(data, data + size);
  bytes.resize(size + kReadAhead);
  bytes.shrink_to_fit();
  try {
    const tessel::IPCMessage message(bytes.data(), static_cast<unsigned>(size));
    checkSentOn(message);
  } catch (const tessel::NYXException& refused) {
    require(!refused.getMessage().empty());
  }
  return 0;
}
