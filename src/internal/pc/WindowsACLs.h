// Replacing the access list of a file or directory.
#pragma once

#include <string>

#include <tessel/RasDescriptor.h>

namespace tessel::internal {

// Leaves access to the current user, the Administrators and, when asked for, the group "omni" and Everyone; to nobody
// else, the system's own account included. A group that does not exist is left out.
//
// The descriptor is the one to trace and to format under. Throws NYXIOException: KTBNV0021 to KTBNV0031, KTBNV0172.
void setWindowsACLs(RasDescriptor descriptor, const std::string& path, bool omniGroup, bool everyoneRead,
                    bool everyoneWrite);

// Whether the file's attributes say so. A failed look at them has every bit set and so says yes: what cannot be looked
// at gets the rights of a directory, which include those of a file.
bool isDirectory(const std::string& path);

}  // namespace tessel::internal
