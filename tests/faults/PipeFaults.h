// What the fault tests of the pipe have in common.
#pragma once

#include <windows.h>

#include <string>

#include <tessel/IPCServer.h>

#include "support/ImportHook.h"
#include "support/PipePeers.h"
#include "support/Thrown.h"

namespace tessel::test {

// An error number that no call of these tests gives by itself.
inline constexpr DWORD kRare = 7777;

// What stays open on purpose for each start of a server: its listener's thread handle and monitor event.
inline constexpr long kHandlesOfAServerStart = 2;

// The capture among recorded errors; empty when there is none.
template <class Errors>
std::string captureIn(const Errors& errors) {
  for (const std::string& error : errors) {
    if (error.compare(0, 10, "KTBNV0150E") == 0) return error;
  }
  return std::string();
}

}  // namespace tessel::test
