// The same small function without trace, with a trace point, and with a call of spdlog: compiled apart from their
// caller, so that none is inlined.
#pragma once

#include <memory>

namespace spdlog {
class logger;
}

namespace bench {

int plain(int value);
int traced(int value);
int logged(int value);

// The logger of logged(); its level is off.
std::shared_ptr<spdlog::logger> disabledLogger();

}  // namespace bench
