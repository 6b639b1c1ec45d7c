// How the arguments of a trace record are shown.
#pragma once

#include <string>

#include <tessel/LogRecord.h>

namespace tessel::internal {

// Each argument in brackets, separated by single blanks.
std::string bracketedArguments(const LogRecord& record);

}  // namespace tessel::internal
