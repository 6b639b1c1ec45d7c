#include "internal/LogBanner.h"

#include <array>
#include <cstdio>

#include <tessel/RasDescriptor.h>

#include "internal/Bundles.h"
#include "internal/PlatformServices.h"

namespace tessel::internal {

const RasDescriptor& elements() {
  static const RasDescriptor& descriptor = *new RasDescriptor("Unknown", kElements, nullptr);
  return descriptor;
}

std::string propertyLines(const LogFileProperties& properties) {
  std::string lines;
  for (const auto& [key, value] : properties.getApplicationProperties()) {
    lines.append(key).append("=").append(value).append("\n");
  }
  return lines;
}

// By hand: the C library's own function keeps its text where another thread may overwrite it.
std::string calendarTime(std::int64_t secondsSinceEpoch) {
  constexpr std::array<const char*, 7> kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array<const char*, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::tm time = localTime(secondsSinceEpoch);
  std::array<char, 64> text{};
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the layout is given as a C format
  std::snprintf(text.data(), text.size(), "%s %s%3d %.2d:%.2d:%.2d %d\n",
                kDays.at(static_cast<std::size_t>(time.tm_wday)), kMonths.at(static_cast<std::size_t>(time.tm_mon)),
                time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec, time.tm_year + 1900);
  return text.data();
}

}  // namespace tessel::internal
