// The names of the library's two message catalogues.
#pragma once

#include <string>

namespace tessel::internal {

inline constexpr const char* kMessages = "com.kelvo.tessel.nativ.common.KTBNVMessages";
inline constexpr const char* kElements = "com.kelvo.tessel.nativ.common.KTBNVElements";

// The same as strings that live for the process, for callers on a path that should not allocate.
const std::string& messagesBundle();
const std::string& elementsBundle();

}  // namespace tessel::internal
