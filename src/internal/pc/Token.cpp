#include "internal/pc/Token.h"

namespace tessel::internal {

TokenRead readToken(HANDLE token, TOKEN_INFORMATION_CLASS kind, TokenBuffer& buffer) {
  DWORD size = 0;
  if (!GetTokenInformation(token, kind, nullptr, 0, &size) && GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    return TokenRead::sizeFailed;
  }
  buffer.assign(size / sizeof(std::max_align_t) + 1, std::max_align_t{});
  return GetTokenInformation(token, kind, buffer.data(), size, &size) ? TokenRead::done : TokenRead::readFailed;
}

}  // namespace tessel::internal
