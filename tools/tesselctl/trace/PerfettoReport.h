// The trace in the JSON format of trace events, which timeline viewers open.
#pragma once

#include "Report.h"

namespace tesselctl::trace {

// A record is placed at its second plus its number within the second in microseconds: that is an order, and not a
// duration. Within a thread the times increase strictly.
void writePerfetto(const TraceLog& log, const std::vector<ThreadTree>& trees, const Sink& sink);

}  // namespace tesselctl::trace
