#include "internal/LastError.h"

#include <tessel/NYXUtils.h>

#include <algorithm>

#include "internal/AnsiText.h"
#include "internal/UnicodeEscapes.h"

namespace tessel::internal {
namespace {

bool isAscii(char c) { return static_cast<signed char>(c) >= 0; }

}  // namespace

std::string LastError::text() const {
  std::string text = NYXUtils::getLastErrorMessage(static_cast<int>(number_));
  if (std::all_of(text.begin(), text.end(), isAscii)) return text;
  return withEscapes(utf16FromAnsi(text));
}

}  // namespace tessel::internal
