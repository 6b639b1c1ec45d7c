// Filling a message text, apart from where the text comes from and who hears of a mismatch.
#pragma once

#include <string>

namespace tessel::internal {

enum class Match { complete, insertsLeft, insertsMissing };

struct Filled {
  Match match;
  int used;  // inserts that found a placeholder
};

// Two apostrophes become one.
void collapseApostrophes(std::string& text);

// Fills {0}, {1}, ... Each search starts at the front of the text, so that a placeholder which an insert brings
// into the text is filled too.
Filled fillPlaceholders(std::string& text, const std::string* const* inserts, int count);

}  // namespace tessel::internal
