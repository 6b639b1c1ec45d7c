// Both ends of a pipe without the library: peers that keep to no format.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace tessel::test {

// Big-endian, as on the wire.
std::string wireNumber(std::uint32_t value);

// "NYXI" and the given header length; what follows is the caller's.
std::string wireStart(std::uint32_t headerLength);

// A message as the library builds it; `textLength` may lie about the text.
std::string wireMessage(std::uint32_t id, std::uint32_t status, const std::string& text);
std::string wireMessage(std::uint32_t id, std::uint32_t status, const std::string& text, std::uint32_t textLength);

// One end of a pipe in message mode; its operations block. Owns the handle.
class RawPipe {
 public:
  explicit RawPipe(HANDLE handle) : handle_(handle) {}
  RawPipe(const RawPipe&) = delete;
  RawPipe& operator=(const RawPipe&) = delete;
  ~RawPipe() { close(); }

  bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE handle() const { return handle_; }

  // One message. Returns whether all of it was taken; otherwise error() tells why.
  bool write(const std::string& bytes);

  // One message of at most 8192 bytes; empty when the other end is gone, error() then tells why.
  std::string read();

  std::string ask(const std::string& bytes) { return write(bytes) ? read() : std::string(); }

  DWORD error() const { return error_; }
  void close();

 protected:
  HANDLE handle_;
  DWORD error_ = NO_ERROR;
};

// The client's end. Waits while all instances are busy, for 30 seconds at most.
class RawClient : public RawPipe {
 public:
  explicit RawClient(const std::string& serviceName);
};

// The only instance of a pipe with the given name.
class RawServer : public RawPipe {
 public:
  explicit RawServer(const std::string& serviceName);

  // Blocks until a client is there.
  bool accept();
};

}  // namespace tessel::test
