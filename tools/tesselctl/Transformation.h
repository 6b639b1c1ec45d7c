// How the serving command turns a request into its reply.
#pragma once

#include <map>
#include <string>

namespace tesselctl {

using Transformation = std::string (*)(const std::string& request);

// By the name that the user gives. Texts are bytes: letters are those of ASCII.
const std::map<std::string, Transformation>& transformations();

}  // namespace tesselctl
