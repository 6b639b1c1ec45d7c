// Texts on their way to one of the standard streams.
#pragma once

#include <ostream>
#include <string_view>

#include "internal/UnicodeEscapes.h"

namespace tessel::internal {

// Catalogue texts in it are shown as people read them. Written at once, so that the texts of several threads do not
// mix.
inline void print(std::ostream& stream, std::string_view text) { stream << withoutEscapes(text) << std::flush; }

}  // namespace tessel::internal
