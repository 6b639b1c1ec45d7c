// An error number that the system never reports by itself: where it shows up, it came from the hook of the test.
#pragma once

#include <windows.h>

#include <string>

namespace tessel::test {

inline constexpr DWORD kRareError = 1234567;
// The system has no text for it, so its number stands in for one.
inline const std::string kRareText = "1234567";

}  // namespace tessel::test
