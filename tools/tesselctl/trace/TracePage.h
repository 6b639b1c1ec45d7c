// The page that shows a trace, put together from the files of the folder page when the tool is built.
#pragma once

#include <string_view>

namespace tesselctl::trace {

// Holds one place to be replaced: @TRACE_DATA@.
std::string_view tracePage();

}  // namespace tesselctl::trace
