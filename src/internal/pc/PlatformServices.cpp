#include "internal/PlatformServices.h"

#include <array>
#include <stdexcept>

#include "internal/pc/Platform.h"

namespace tessel::internal {

std::tm localTime(std::int64_t secondsSinceEpoch) {
  const std::time_t time = secondsSinceEpoch;
  std::tm result{};
  localtime_s(&result, &time);
  return result;
}

std::tm utcTime(std::int64_t secondsSinceEpoch) {
  const std::time_t time = secondsSinceEpoch;
  std::tm result{};
  gmtime_s(&result, &time);
  return result;
}

unsigned long currentProcessId() { return GetCurrentProcessId(); }

std::string userLocaleName() {
  std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
  if (GetUserDefaultLocaleName(name.data(), static_cast<int>(name.size())) == 0) {
    throw std::runtime_error("the system names no default locale");
  }
  std::string narrow;
  for (const wchar_t* c = name.data(); *c != L'\0'; ++c) narrow += *c < 0x80 ? static_cast<char>(*c) : '?';
  return narrow;
}

}  // namespace tessel::internal
