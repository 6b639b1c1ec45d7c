// The call trees as text.
#pragma once

#include "Report.h"

namespace tesselctl::trace {

// One line for each call and point, indented by the calls around it; the further lines of a text stand below.
void writeText(const TraceLog& log, const std::vector<ThreadTree>& trees, const Sink& sink);

// What was read and what is missing: two lines without the last line end.
std::string summaryText(const TraceLog& log, const std::vector<ThreadTree>& trees);

}  // namespace tesselctl::trace
