// One record of a trace file, as views into the bytes of the file.
#pragma once

#include <cstdint>
#include <string_view>

namespace tesselctl::trace {

enum class RecordKind : std::uint8_t { entry, exit, data, throwing, other };

struct TraceRecord {
  std::uint32_t second = 0;  // of the day, local time
  std::uint32_t number = 0;  // counts the records of that second: an order, not a time
  std::uint64_t object = 0;  // an address, 0 for a static method
  std::uint32_t thread = 0;
  std::uint32_t depth = 0;  // 1 for a call that no other encloses, and for a point outside of every call
  std::uint32_t file = 0;   // index into the files of the log
  std::uint32_t line = 0;   // of that file, from 1
  RecordKind kind = RecordKind::other;
  bool withoutEntry = false;  // an exit whose method was never entered, as the trace itself says
  std::string_view time;      // as it stands in the file
  std::string_view className;
  std::string_view method;  // empty when the kind is `other`
  std::string_view text;    // arguments, returned value or what was thrown; the whole message of the kind `other`
};

}  // namespace tesselctl::trace
