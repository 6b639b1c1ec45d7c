// Where a Java process that names no log directory writes its captures.
#pragma once

#include <string>

#include <tessel/NYXEnvironment.h>

namespace tessel::internal::jni {

// The logs of that folder, unless the directory is known already: the first one in a process stays.
inline void offerLogDirectory(const std::string& folder) {
  NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", folder + "/logs");
}

}  // namespace tessel::internal::jni
