#include "internal/PlatformServices.h"

#include <unistd.h>

#include <mutex>
#include <stdexcept>

#include "host/HostPlatform.h"

namespace tessel {
namespace {

struct Locale {
  std::mutex mutex;
  std::string name = "en-US";  // guarded by mutex
};

Locale& locale() {
  static Locale& instance = *new Locale;
  return instance;
}

}  // namespace

void host::setUserLocaleName(const std::string& name) {
  const std::lock_guard guard(locale().mutex);
  locale().name = name;
}

namespace internal {

std::int64_t currentTime() noexcept { return std::time(nullptr); }

// Of another clock than the one above, as the system's is.
std::uint64_t clockTick() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000;
}

std::tm localTime(std::int64_t secondsSinceEpoch) {
  const std::time_t time = secondsSinceEpoch;
  std::tm result{};
  localtime_r(&time, &result);
  return result;
}

std::tm utcTime(std::int64_t secondsSinceEpoch) {
  const std::time_t time = secondsSinceEpoch;
  std::tm result{};
  gmtime_r(&time, &result);
  return result;
}

unsigned long currentProcessId() { return static_cast<unsigned long>(getpid()); }

std::string userLocaleName() {
  const std::lock_guard guard(locale().mutex);
  if (locale().name.empty()) throw std::runtime_error("the system names no default locale");
  return locale().name;
}

}  // namespace internal
}  // namespace tessel
