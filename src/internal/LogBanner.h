// What the start banners of the log files are made of.
#pragma once

#include <cstdint>
#include <string>

#include <tessel/LogFileProperties.h>

namespace tessel {
class RasDescriptor;
}

namespace tessel::internal {

// The fixed texts of the diagnostics, for NLS::format: as the class "Unknown", which has no logger.
const RasDescriptor& elements();

// "key=value" and a line end for each, in the order of the keys.
std::string propertyLines(const LogFileProperties& properties);

// Local time in the C library's layout with its line end, such as "Wed Jan  3 09:05:00 2024\n".
std::string calendarTime(std::int64_t secondsSinceEpoch);

}  // namespace tessel::internal
