// The one place where a run-time type becomes text.
#pragma once

#include <string>
#include <typeinfo>

namespace tessel::internal {

// "class " and the unqualified class name, whatever the compiler's type information looks like.
std::string classText(const std::type_info& type);

}  // namespace tessel::internal
