// The trace as one page that needs nothing beside it.
#pragma once

#include "Report.h"

namespace tesselctl::trace {

void writeHtml(const TraceLog& log, const std::vector<ThreadTree>& trees, const Sink& sink);

}  // namespace tesselctl::trace
