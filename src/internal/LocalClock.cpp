#include "internal/LocalClock.h"

#include <cstdio>
#include <ctime>

#include "internal/PlatformServices.h"
#include "internal/ThreadState.h"

namespace tessel::internal {

const LocalClock& localClock(std::int64_t secondsSinceEpoch) {
  LocalClock& mine = threadState().clock;
  if (mine.second == secondsSinceEpoch) return mine;
  const std::tm local = localTime(secondsSinceEpoch);
  // NOLINTBEGIN(cppcoreguidelines-pro-type-vararg): the layouts are given as C formats
  std::snprintf(mine.time.data(), mine.time.size(), "%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
  std::snprintf(mine.date.data(), mine.date.size(), "%02d/%02d/%04d", local.tm_mday, local.tm_mon + 1,
                local.tm_year + 1900);
  const bool named = std::strftime(mine.zone.data(), mine.zone.size(), "%Z", &local) != 0;
  if (!named) std::snprintf(mine.zone.data(), mine.zone.size(), "???");
  // NOLINTEND(cppcoreguidelines-pro-type-vararg)
  mine.second = secondsSinceEpoch;
  return mine;
}

}  // namespace tessel::internal
