// What the portable classes need from the system; implemented once per platform.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace tessel::internal {

// Seconds since the epoch. The C library's function may ask for the time zone as well, which takes longer than
// writing a line.
std::int64_t currentTime() noexcept;
// Changes with each step of the system's coarse clock, about every 16 ms; to ask for it costs next to nothing.
std::uint64_t clockTick() noexcept;
std::tm localTime(std::int64_t secondsSinceEpoch);
std::tm utcTime(std::int64_t secondsSinceEpoch);
unsigned long currentProcessId();

// The user's default locale, as "fr-FR" or "fr_FR.UTF-8". Throws std::runtime_error when the system names none.
std::string userLocaleName();

}  // namespace tessel::internal
