#include "System.h"

#include <fcntl.h>
#include <io.h>

#include <array>
#include <cstdio>
#include <vector>

#include <tessel/NYXUtils.h>

#include "internal/pc/UniqueHandle.h"

namespace tesselctl {
namespace {

constexpr DWORD kLongestPath = 32768;

std::string pathOf(HMODULE module) {
  std::string path(kLongestPath, '\0');
  path.resize(GetModuleFileNameA(module, path.data(), kLongestPath));
  return path;
}

bool hasKind(const std::string& path, DWORD kind) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == kind;
}

}  // namespace

void makeStreamsBinary() {
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
}

std::string executableFolder() { return tessel::NYXUtils::getParent(pathOf(nullptr)); }

bool isFile(const std::string& path) { return hasKind(path, 0); }

bool isFolder(const std::string& path) { return hasKind(path, FILE_ATTRIBUTE_DIRECTORY); }

std::vector<std::string> filesLike(const std::string& pattern) {
  std::vector<std::string> names;
  WIN32_FIND_DATAA found{};
  const HANDLE search = FindFirstFileA(pattern.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    names.emplace_back(found.cFileName);
  } while (FindNextFileA(search, &found));
  FindClose(search);
  return names;
}

std::string absolutePath(const std::string& path) {
  std::string result(kLongestPath, '\0');
  const DWORD length = GetFullPathNameA(path.c_str(), kLongestPath, result.data(), nullptr);
  result.resize(length < kLongestPath ? length : 0);
  return result;
}

std::string modulePath(const std::string& name) {
  const HMODULE module = GetModuleHandleA(name.c_str());
  return module ? pathOf(module) : name;
}

std::string fileVersion(const std::string& path) {
  DWORD ignored = 0;
  std::vector<unsigned char> resource(GetFileVersionInfoSizeA(path.c_str(), &ignored));
  if (resource.empty() || !GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data())) {
    return {};
  }
  void* value = nullptr;
  UINT length = 0;
  if (!VerQueryValueA(resource.data(), "\\", &value, &length) || length < sizeof(VS_FIXEDFILEINFO)) return {};
  const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(value);
  return std::to_string(HIWORD(fixed.dwFileVersionMS)) + '.' + std::to_string(LOWORD(fixed.dwFileVersionMS)) + '.' +
         std::to_string(HIWORD(fixed.dwFileVersionLS));
}

std::string searchPath(const std::string& program) {
  std::string path(kLongestPath, '\0');
  const DWORD length = SearchPathA(nullptr, program.c_str(), nullptr, kLongestPath, path.data(), nullptr);
  path.resize(length < kLongestPath ? length : 0);
  return path;
}

std::string temporaryFolder() {
  std::string path(kLongestPath, '\0');
  path.resize(GetTempPathA(kLongestPath, path.data()));
  return path;
}

bool canCreateFile(const std::string& folder, std::string& reason) {
  const std::string path = folder + "\\tesselctl-" + std::to_string(GetCurrentProcessId()) + ".tmp";
  const tessel::internal::UniqueHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  if (!file) reason = tessel::NYXUtils::getLastErrorMessage();
  return static_cast<bool>(file);
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
