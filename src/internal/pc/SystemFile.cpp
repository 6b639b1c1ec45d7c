#include "internal/SystemFile.h"

#include <algorithm>

#include "internal/pc/UniqueHandle.h"

namespace tessel::internal {
namespace {

constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE;

UniqueHandle openFile(const std::string& path, DWORD access, DWORD disposition) {
  return UniqueHandle(CreateFileA(path.c_str(), access, kShared, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// NOLINTBEGIN(performance-no-int-to-ptr,cppcoreguidelines-pro-type-reinterpret-cast): the header knows no handles
HANDLE handleOf(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }
std::intptr_t valueOf(UniqueHandle handle) { return reinterpret_cast<std::intptr_t>(handle.release()); }
// NOLINTEND(performance-no-int-to-ptr,cppcoreguidelines-pro-type-reinterpret-cast)

}  // namespace

bool fileExists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

bool canAppend(const std::string& path) { return static_cast<bool>(openFile(path, FILE_APPEND_DATA, OPEN_EXISTING)); }

int lastByte(const std::string& path) {
  const UniqueHandle file = openFile(path, GENERIC_READ, OPEN_EXISTING);
  LARGE_INTEGER offset;
  offset.QuadPart = -1;
  unsigned char byte = 0;
  DWORD length = 0;
  const bool read = file && SetFilePointerEx(file.get(), offset, nullptr, FILE_END) &&
                    ReadFile(file.get(), &byte, 1, &length, nullptr) && length == 1;
  return read ? byte : -1;
}

Renamed renameFile(const std::string& from, const std::string& to) {
  if (MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING)) return Renamed::done;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? Renamed::noSource : Renamed::failed;
}

bool removeFile(const std::string& path) { return DeleteFileA(path.c_str()) != 0; }

bool SystemFile::open(const std::string& path, FileContent content) {
  close();
  UniqueHandle file = openFile(path, GENERIC_WRITE, content == FileContent::emptied ? CREATE_ALWAYS : OPEN_ALWAYS);
  if (!file) return false;
  handle_ = valueOf(std::move(file));
  return true;
}

void SystemFile::close() noexcept {
  const UniqueHandle closed(handleOf(handle_));
  handle_ = kNone;
}

std::int64_t SystemFile::seekToEnd() {
  LARGE_INTEGER end;
  return SetFilePointerEx(handleOf(handle_), LARGE_INTEGER{}, &end, FILE_END) ? end.QuadPart : -1;
}

std::size_t SystemFile::write(const char* bytes, std::size_t size) {
  constexpr std::size_t kMost = 1U << 30U;
  std::size_t done = 0;
  while (done < size) {
    DWORD written = 0;
    const auto part = static_cast<DWORD>(std::min(size - done, kMost));
    if (!WriteFile(handleOf(handle_), bytes + done, part, &written, nullptr)) break;
    // No progress and no error: only a full disk does that.
    if (written == 0) {
      SetLastError(ERROR_DISK_FULL);
      break;
    }
    done += written;
  }
  return done;
}

}  // namespace tessel::internal
