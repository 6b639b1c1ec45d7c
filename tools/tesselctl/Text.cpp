#include "Text.h"

#include "internal/UnicodeEscapes.h"
#include "internal/pc/Platform.h"

namespace tesselctl {
namespace {

int lengthOf(std::size_t size) { return static_cast<int>(size); }

// Empty when the text is not in that code page.
std::wstring fromCodePage(unsigned codePage, DWORD flags, const std::string& text) {
  std::wstring wide(text.size(), L'\0');
  const int length =
      MultiByteToWideChar(codePage, flags, text.data(), lengthOf(text.size()), wide.data(), lengthOf(wide.size()));
  wide.resize(static_cast<std::size_t>(length));
  return wide;
}

std::string utf8Of(const std::wstring& wide) {
  constexpr std::size_t kLongest = 3;  // bytes of a unit
  std::string text(wide.size() * kLongest, '\0');
  const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), lengthOf(wide.size()), text.data(),
                                         lengthOf(text.size()), nullptr, nullptr);
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace

std::string textOfArgument(const std::string& argument) { return utf8Of(fromCodePage(CP_ACP, 0, argument)); }

std::string textOfBytes(const std::string& bytes) {
  const bool isUtf8 = bytes.empty() || !fromCodePage(CP_UTF8, MB_ERR_INVALID_CHARS, bytes).empty();
  return isUtf8 ? bytes : textOfArgument(bytes);
}

std::string textOfLibrary(const std::string& text) { return tessel::internal::withoutEscapes(textOfBytes(text)); }

std::string foldCase(const std::string& text) {
  std::wstring wide = wideText(text);
  CharUpperBuffW(wide.data(), static_cast<DWORD>(wide.size()));
  return utf8Of(wide);
}

std::wstring wideText(const std::string& text) { return fromCodePage(CP_UTF8, 0, text); }

}  // namespace tesselctl
