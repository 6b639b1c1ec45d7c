#include <tessel/IPCMessage.h>

#include <cstring>
#include <ostream>

#include <tessel/NYXException.h>
#include <tessel/NYXMessageTooShortException.h>

#include "internal/BigEndian.h"
#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace tessel {
namespace {

constexpr std::uint32_t kFixedHeader = 8;  // eye-catcher and header length
constexpr std::uint32_t kHeaderLength = 8;
constexpr std::uint32_t kTextOffset = 20;

using internal::readBigEndian;
using internal::writeBigEndian;

}  // namespace

const std::int32_t IPCMessage::STATUS_SUCCESS;
const std::int32_t IPCMessage::STATUS_EXCEPTION;
const std::int32_t IPCMessage::STATUS_TIMEOUT;
const std::int32_t IPCMessage::STATUS_WARNING;
const std::uint32_t IPCMessage::MAX_MESSAGE_TEXT_LEN;
const std::uint32_t IPCMessage::MAX_MESSAGE_DATA_LEN;

const RasDescriptor IPCMessage::rd("IPCMessage", internal::kMessages);

IPCMessage::IPCMessage() = default;

IPCMessage::IPCMessage(long id, const std::string& text) { initialize(id, STATUS_SUCCESS, text); }

IPCMessage::IPCMessage(long id, long status, const std::string& text) { initialize(id, status, text); }

void IPCMessage::initialize(long id, long status, const std::string& text) {
  messageId_ = static_cast<std::int32_t>(id);
  messageStatus_ = static_cast<std::int32_t>(status);
  messageText_.assign(text, 0, MAX_MESSAGE_TEXT_LEN);
  textLength_ = static_cast<std::uint32_t>(messageText_.size());
  if (text.size() > MAX_MESSAGE_TEXT_LEN) {
    internal::MethodTrace(rd, this, "initialize").data(TraceLevel::MODERATE, "Message truncated");
  }
}

// All sums are unsigned 32-bit and may wrap: a header length near 2^32 then passes the first comparison, but never
// the later ones, and reads nothing beyond `length` and the 4 bytes of room behind it.
IPCMessage::IPCMessage(unsigned char* bytes, unsigned int length) {
  const internal::MethodTrace trace(rd, this, "IPCMessage", length);
  const auto tooShort = [&](const char* key, std::uint32_t needed) {
    return trace.failure<NYXMessageTooShortException>(key, std::to_string(length), std::to_string(needed));
  };
  if (length < kFixedHeader) {
    throw trace.failure<NYXMessageTooShortException>("KTBNV0091_MESSAGE_TOO_SHORT", std::to_string(length));
  }
  if (std::memcmp(bytes, eyeCatcher_, sizeof eyeCatcher_) != 0) {
    throw trace.failure<NYXException>("KTBNV0092_INVALID_EYE_CATCHER");
  }
  const std::uint32_t header = readBigEndian(bytes + 4);
  const std::uint32_t lengthOffset = header + kFixedHeader;
  if (length < lengthOffset) throw tooShort("KTBNV0093_MESSAGE_TOO_SHORT", lengthOffset);
  messageId_ = header < 4 || length < 12 ? 0 : static_cast<std::int32_t>(readBigEndian(bytes + 8));
  messageStatus_ = header < 8 || length < 16 ? 0 : static_cast<std::int32_t>(readBigEndian(bytes + 12));
  const std::uint32_t textLength = readBigEndian(bytes + lengthOffset);
  const std::uint32_t textOffset = lengthOffset + 4;
  if (length < textOffset + textLength) throw tooShort("KTBNV0094_MESSAGE_TOO_SHORT", textOffset + textLength);
  if (textLength > MAX_MESSAGE_TEXT_LEN) {
    throw trace.failure<NYXException>("KTBNV0095_MESSAGE_TEXT_TOO_LONG", std::to_string(textLength),
                                      std::to_string(MAX_MESSAGE_TEXT_LEN));
  }
  messageText_.assign(reinterpret_cast<const char*>(bytes) + textOffset, textLength);
  textLength_ = textLength;
}

IPCMessage::IPCMessage(const IPCMessage& other) = default;
IPCMessage& IPCMessage::operator=(const IPCMessage& other) = default;
IPCMessage::~IPCMessage() = default;

long IPCMessage::getMessageId() const { return messageId_; }
long IPCMessage::getMessageStatus() const { return messageStatus_; }
const std::string& IPCMessage::getMessageText() const { return messageText_; }

unsigned char* IPCMessage::getMessageBytes(unsigned char* buffer, int* length) const {
  std::memcpy(buffer, eyeCatcher_, sizeof eyeCatcher_);
  writeBigEndian(buffer + 4, kHeaderLength);
  writeBigEndian(buffer + 8, static_cast<std::uint32_t>(messageId_));
  writeBigEndian(buffer + 12, static_cast<std::uint32_t>(messageStatus_));
  writeBigEndian(buffer + 16, textLength_);
  std::memcpy(buffer + kTextOffset, messageText_.data(), textLength_);
  *length = static_cast<int>(kTextOffset + textLength_);
  return buffer;
}

std::ostream& operator<<(std::ostream& stream, const IPCMessage& message) {
  return stream << "IPCMessage id:" << message.getMessageId() << " status:" << message.getMessageStatus()
                << " text :" << message.getMessageText();
}

}  // namespace tessel
