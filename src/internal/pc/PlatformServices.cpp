#include "internal/PlatformServices.h"

#include <array>
#include <stdexcept>

#include "internal/pc/Platform.h"

namespace tessel::internal {

std::int64_t currentTime() noexcept {
  constexpr std::int64_t kSecond = 10'000'000;             // in the system's steps of 100 ns
  constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;  // from the system's epoch
  FILETIME now;
  GetSystemTimePreciseAsFileTime(&now);
  const auto steps = static_cast<std::int64_t>(std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime);
  return steps / kSecond - kSecondsTo1970;
}

std::uint64_t clockTick() noexcept { return GetTickCount64(); }

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
