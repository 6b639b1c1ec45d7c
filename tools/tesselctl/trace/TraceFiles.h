// Which files make up a trace, and in which order they were written.
#pragma once

#include <string>
#include <vector>

namespace tesselctl::trace {

// The generations of one pattern.
struct FileSet {
  std::string name;                // the pattern's last part: "trace%g.log"
  std::vector<std::string> paths;  // the oldest generation first
};

// An argument with "%g" in its file name stands for every generation that exists; all others are files as they are.
// Files of the same pattern come together at the place of the first; a file is taken once. The generation of a file is
// the last number in its name, but not one behind the last dot when there is another: that tells processes apart.
//
// Throws std::runtime_error when no file matches a pattern.
std::vector<FileSet> fileSets(const std::vector<std::string>& arguments);

// The bytes of a file. Throws std::runtime_error when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace tesselctl::trace
