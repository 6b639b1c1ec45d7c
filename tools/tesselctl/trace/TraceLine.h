// The layout of a trace line: time stamp, thread, object, class, and the message with its indentation.
#pragma once

#include <optional>
#include <string_view>

#include "TraceRecord.h"

namespace tesselctl::trace {

// Whether the line begins like a record: with a time stamp. The other lines belong to the record above them.
bool startsRecord(std::string_view line);

// Nothing when the columns are not those of a record. The views point into `line`, also when they are empty, so that
// the text can be extended by the lines that follow.
std::optional<TraceRecord> parseRecord(std::string_view line);

}  // namespace tesselctl::trace
