#include "internal/pc/Token.h"

namespace tessel::internal {
namespace {

bool askForSize(HANDLE token, TOKEN_INFORMATION_CLASS kind, DWORD& size) {
  return GetTokenInformation(token, kind, nullptr, 0, &size) || GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

bool read(HANDLE token, TOKEN_INFORMATION_CLASS kind, DWORD size, TokenBuffer& buffer) {
  buffer.assign(size / sizeof(std::max_align_t) + 1, std::max_align_t{});
  return GetTokenInformation(token, kind, buffer.data(), size, &size) != FALSE;
}

}  // namespace

TokenRead readToken(HANDLE token, TOKEN_INFORMATION_CLASS kind, TokenBuffer& buffer) {
  DWORD size = 0;
  if (!askForSize(token, kind, size)) return TokenRead::sizeFailed;
  return read(token, kind, size, buffer) ? TokenRead::done : TokenRead::readFailed;
}

bool readUser(HANDLE token, TokenBuffer& buffer) {
  DWORD size = 0;
  askForSize(token, TokenUser, size);
  return read(token, TokenUser, size, buffer);
}

}  // namespace tessel::internal
