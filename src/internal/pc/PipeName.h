// The name of a service's pipe, and its size.
#pragma once

#include <string>

#include <tessel/IPCMessage.h>

namespace tessel::internal {

inline std::string pipePath(const std::string& serviceName) { return R"(\\.\pipe\)" + serviceName; }

// What a pipe holds in each direction until the other end reads it.
inline constexpr unsigned kPipeSize = IPCMessage::MAX_MESSAGE_DATA_LEN;

// Room behind a full message: the parser looks at four bytes there before it knows the message's end.
inline constexpr unsigned kReadAhead = 4;

}  // namespace tessel::internal
