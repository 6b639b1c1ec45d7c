// Reading access tokens.
#pragma once

#include <cstddef>
#include <vector>

#include "internal/pc/Platform.h"

namespace tessel::internal {

// The bytes of one kind of token information, aligned for the structures that lie in them.
using TokenBuffer = std::vector<std::max_align_t>;

enum class TokenRead { done, sizeFailed, readFailed };

// Asks for the size, then reads. On failure the thread's last error tells why.
TokenRead readToken(HANDLE token, TOKEN_INFORMATION_CLASS kind, TokenBuffer& buffer);

// The same for the user, but only the reading decides: without the right size it fails, too.
bool readUser(HANDLE token, TokenBuffer& buffer);

}  // namespace tessel::internal
