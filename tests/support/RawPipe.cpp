#include "support/RawPipe.h"

#include <vector>

namespace tessel::test {
namespace {

constexpr DWORD kBufferSize = 8192;
constexpr DWORD kBusyWait = 30000;

std::string pathOf(const std::string& serviceName) { return "\\\\.\\pipe\\" + serviceName; }

HANDLE openPipe(const std::string& path) {
  for (;;) {
    const HANDLE pipe = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (pipe != INVALID_HANDLE_VALUE || GetLastError() != ERROR_PIPE_BUSY) return pipe;
    if (!WaitNamedPipeA(path.c_str(), kBusyWait)) return INVALID_HANDLE_VALUE;
  }
}

}  // namespace

std::string wireNumber(std::uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFFU);
  return bytes;
}

std::string wireStart(std::uint32_t headerLength) { return "NYXI" + wireNumber(headerLength); }

std::string wireMessage(std::uint32_t id, std::uint32_t status, const std::string& text) {
  return wireMessage(id, status, text, static_cast<std::uint32_t>(text.size()));
}

std::string wireMessage(std::uint32_t id, std::uint32_t status, const std::string& text, std::uint32_t textLength) {
  return wireStart(8) + wireNumber(id) + wireNumber(status) + wireNumber(textLength) + text;
}

bool RawPipe::write(const std::string& bytes) {
  DWORD written = 0;
  const BOOL done = WriteFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  error_ = done ? NO_ERROR : GetLastError();
  return done && written == bytes.size();
}

std::string RawPipe::read() {
  std::vector<char> buffer(kBufferSize);
  DWORD length = 0;
  const BOOL done = ReadFile(handle_, buffer.data(), kBufferSize, &length, nullptr);
  error_ = done ? NO_ERROR : GetLastError();
  return std::string(buffer.data(), length);
}

void RawPipe::close() {
  if (isOpen()) CloseHandle(handle_);
  handle_ = INVALID_HANDLE_VALUE;
}

RawClient::RawClient(const std::string& serviceName) : RawPipe(openPipe(pathOf(serviceName))) {
  DWORD mode = PIPE_READMODE_MESSAGE;
  if (!isOpen() || !SetNamedPipeHandleState(handle_, &mode, nullptr, nullptr)) error_ = GetLastError();
}

RawServer::RawServer(const std::string& serviceName)
    : RawPipe(CreateNamedPipeA(pathOf(serviceName).c_str(), PIPE_ACCESS_DUPLEX,
                               PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, kBufferSize, kBufferSize, 0,
                               nullptr)) {}

bool RawServer::accept() {
  if (ConnectNamedPipe(handle_, nullptr)) return true;
  error_ = GetLastError();
  return error_ == ERROR_PIPE_CONNECTED;
}

}  // namespace tessel::test
