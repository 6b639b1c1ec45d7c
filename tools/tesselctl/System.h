// What the tool asks of the system itself.
#pragma once

#include <string>

namespace tesselctl {

// The standard streams carry bytes as they are.
void makeStreamsBinary();

// The folder that the program lies in.
std::string executableFolder();

// Reads standard input until it ends, and forgets what it read.
void waitForEndOfInput();

}  // namespace tesselctl
