/// @file
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include <tessel/Export.h>

// The Windows headers define this name as a macro; the constant of the same name is part of the message format. After
// this header the macro is gone. A program that includes <windows.h> later gets it back and then writes
// tessel::IPCMessage::MessageStatus::TIMEOUT instead.
#ifdef STATUS_TIMEOUT
#undef STATUS_TIMEOUT
#endif

namespace tessel {

class RasDescriptor;

/// The unit exchanged over a pipe: an id, a status and a short text of any bytes.
///
/// On the wire, all integers big-endian: the bytes "NYXI", the header length 8, id, status, text length, text.
class TESSEL_API IPCMessage {
 public:
  // Not constexpr: inline members of an exported class are not exported, and a reference to one would not link.
  /// The listener answered.
  static const std::int32_t STATUS_SUCCESS = 0;
  /// The text is the message of an exception.
  static const std::int32_t STATUS_EXCEPTION = 1;
  /// For the two ends to agree on: the library sends neither this nor STATUS_WARNING.
  static const std::int32_t STATUS_TIMEOUT = 2;
  /// As STATUS_TIMEOUT.
  static const std::int32_t STATUS_WARNING = 3;

  /// The same values under names that no Windows macro takes.
  struct MessageStatus {
    static constexpr std::int32_t SUCCESS = 0;
    static constexpr std::int32_t EXCEPTION = 1;
    static constexpr std::int32_t TIMEOUT = 2;
    static constexpr std::int32_t WARNING = 3;
  };

  /// Longest text in bytes.
  static const std::uint32_t MAX_MESSAGE_TEXT_LEN = 1024;
  /// Longest message in bytes: 20 bytes of header and the longest text.
  static const std::uint32_t MAX_MESSAGE_DATA_LEN = 1044;

  /// Id -1, status 0, empty text.
  IPCMessage();
  /// Status 0. @param id any 32-bit value. @param text any bytes, cut silently to the first 1024.
  IPCMessage(long id, const std::string& text);
  /// @param id any 32-bit value. @param status one of the STATUS constants. @param text as above.
  IPCMessage(long id, long status, const std::string& text);
  /// Parses a received message; bytes behind it are ignored.
  ///
  /// @param bytes the buffer must have room for 4 bytes more than `length`, since the text length of a shortened
  ///        message is read before its end is checked.
  /// @param length number of bytes received.
  /// @throws NYXMessageTooShortException KTBNV0091, KTBNV0093, KTBNV0094 when the message ends too early.
  /// @throws NYXException KTBNV0092 for another eye-catcher, KTBNV0095 for a text above 1024 bytes.
  IPCMessage(unsigned char* bytes, unsigned int length);
  IPCMessage(const IPCMessage& other);
  IPCMessage& operator=(const IPCMessage& other);
  virtual ~IPCMessage();

  /// @return the id; -1 in the default message.
  long getMessageId() const;
  /// @return one of the STATUS constants, or whatever a foreign peer sent.
  long getMessageStatus() const;
  /// @return at most 1024 bytes; valid as long as the message.
  const std::string& getMessageText() const;

  /// Writes the wire form. Allocates nothing.
  ///
  /// @param buffer room for MAX_MESSAGE_DATA_LEN bytes. @param length set to the bytes written.
  /// @return `buffer`.
  unsigned char* getMessageBytes(unsigned char* buffer, int* length) const;

 private:
  void initialize(long id, long status, const std::string& text);

  static const RasDescriptor rd;

  unsigned char eyeCatcher_[4] = {'N', 'Y', 'X', 'I'};
  std::uint32_t headerLength_ = 8;
  std::int32_t messageId_ = -1;
  std::int32_t messageStatus_ = STATUS_SUCCESS;
  std::uint32_t textLength_ = 0;
  std::string messageText_;
};

/// Writes "IPCMessage id:", the id, " status:", the status, " text :" and the text.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const IPCMessage& message);

}  // namespace tessel
