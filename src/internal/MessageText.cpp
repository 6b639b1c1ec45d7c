#include "internal/MessageText.h"

#include <array>
#include <string_view>

namespace tessel::internal {

void collapseApostrophes(std::string& text) {
  for (std::size_t at = text.find("''"); at != std::string::npos; at = text.find("''", at + 1)) text.erase(at, 1);
}

Filled fillPlaceholders(std::string& text, const std::string* const* inserts, int count) {
  std::array<char, 3> placeholder{'{', '0', '}'};
  const std::string_view wanted(placeholder.data(), placeholder.size());
  int used = 0;
  for (std::size_t at = text.find(wanted); at != std::string::npos; at = text.find(wanted)) {
    if (used == count) return {Match::insertsMissing, used};
    if (!inserts[used]) break;
    text.replace(at, wanted.size(), *inserts[used]);
    ++placeholder[1];
    ++used;
  }
  return {used >= count ? Match::complete : Match::insertsLeft, used};
}

}  // namespace tessel::internal
