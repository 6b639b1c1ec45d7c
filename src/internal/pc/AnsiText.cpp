#include "internal/AnsiText.h"

#include "internal/pc/Platform.h"

namespace tessel::internal {
namespace {

int lengthOf(std::size_t size) { return static_cast<int>(size); }

// The system's wide character is a UTF-16 unit.
wchar_t* wide(char16_t* text) { return reinterpret_cast<wchar_t*>(text); }
const wchar_t* wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

// Where the code page is UTF-8, characters that are not in it do not exist, and asking about them is an error.
bool ansiIsUtf8() { return GetACP() == CP_UTF8; }

}  // namespace

std::u16string utf16FromAnsi(std::string_view text) {
  std::u16string result(text.size(), u'\0');
  const int length =
      MultiByteToWideChar(CP_ACP, 0, text.data(), lengthOf(text.size()), wide(result.data()), lengthOf(result.size()));
  result.resize(static_cast<std::size_t>(length));
  return result;
}

bool ansiFromUtf16(std::u16string_view text, std::string& ansi) {
  constexpr std::size_t kLongest = 4;  // bytes of a character
  ansi.assign(text.size() * kLongest, '\0');
  if (text.empty()) return true;
  const bool utf8 = ansiIsUtf8();
  BOOL missing = FALSE;
  const int length = WideCharToMultiByte(CP_ACP, utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS, wide(text.data()),
                                         lengthOf(text.size()), ansi.data(), lengthOf(ansi.size()), nullptr,
                                         utf8 ? nullptr : &missing);
  ansi.resize(static_cast<std::size_t>(length));
  return length > 0 && !missing;
}

}  // namespace tessel::internal
