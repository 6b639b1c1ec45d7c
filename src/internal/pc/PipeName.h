// The name of a service's pipe.
#pragma once

#include <string>

namespace tessel::internal {

inline std::string pipePath(const std::string& serviceName) { return R"(\\.\pipe\)" + serviceName; }

// Room behind a full message: the parser looks at four bytes there before it knows the message's end.
inline constexpr unsigned kReadAhead = 4;

}  // namespace tessel::internal
