// What tests may change of the stand-ins for the platform.
#pragma once

#include <string>

namespace tessel::host {

// The name that the system gives for the user's locale from now on; the empty name makes the system name none.
void setUserLocaleName(const std::string& name);

}  // namespace tessel::host
