// What the tool asks of the system itself.
#pragma once

#include <string>
#include <vector>

namespace tesselctl {

// The standard streams carry bytes as they are.
void makeStreamsBinary();

// The folder that the program lies in.
std::string executableFolder();

// Paths are in the code page, as everywhere in the library.
bool isFile(const std::string& path);
bool isFolder(const std::string& path);

// The names of the files that match; none when there is no such folder.
std::vector<std::string> filesLike(const std::string& pattern);

// The path from its drive on.
std::string absolutePath(const std::string& path);

// Where a loaded library or program lies.
std::string modulePath(const std::string& name);

// The version that a file's resource tells, as 0.1.0; empty when it tells none.
std::string fileVersion(const std::string& path);

// Where the system finds the program; empty when it does not.
std::string searchPath(const std::string& program);

// With a separator at its end.
std::string temporaryFolder();

// Makes a file and removes it again. @param reason set when that fails.
bool canCreateFile(const std::string& folder, std::string& reason);

// Reads standard input until it ends, and forgets what it read.
void waitForEndOfInput();

}  // namespace tesselctl
