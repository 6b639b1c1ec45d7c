#include "System.h"

#include <fcntl.h>
#include <io.h>

#include <array>
#include <cstdio>

#include <tessel/NYXUtils.h>

#include "internal/pc/Platform.h"

namespace tesselctl {

void makeStreamsBinary() {
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
}

std::string executableFolder() {
  constexpr DWORD kLongestPath = 32768;
  std::string path(kLongestPath, '\0');
  path.resize(GetModuleFileNameA(nullptr, path.data(), kLongestPath));
  return tessel::NYXUtils::getParent(path);
}

// Past the C library, whose stream would stay locked by the waiting thread when the process ends.
void waitForEndOfInput() {
  std::array<char, 256> ignored{};
  for (;;) {
    DWORD length = 0;
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (!ReadFile(input, ignored.data(), static_cast<DWORD>(ignored.size()), &length, nullptr) || length == 0) return;
  }
}

}  // namespace tesselctl
