// Running another program.
#pragma once

#include <string>
#include <vector>

namespace tesselctl {

// The words as one command line, quoted the way that programs take it apart again.
std::string commandLine(const std::vector<std::string>& words);

// Runs the program with the standard streams of this one and waits for its end. An interrupt from the keyboard is the
// program's affair meanwhile. Returns its exit code; throws std::runtime_error when it cannot be started.
int runProgram(const std::vector<std::string>& words);

// The full name of a program that may lie in the search path, as NYXProcess takes it: ending in ".exe". Throws
// std::runtime_error when there is none.
std::string findProgram(const std::string& name);

}  // namespace tesselctl
