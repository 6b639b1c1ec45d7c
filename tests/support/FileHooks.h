// Failing calls of a SecureFileHandler, told apart by the file that they are made for.
#pragma once

#include <windows.h>

#include <string>

#include "support/ImportHook.h"
#include "support/RareError.h"

namespace tessel::test {

using CreateHook = ImportHook<"CreateFileA", decltype(CreateFileA)>;
using WriteHook = ImportHook<"WriteFile", decltype(WriteFile)>;
using SeekHook = ImportHook<"SetFilePointerEx", decltype(SetFilePointerEx)>;
using MoveHook = ImportHook<"MoveFileExA", decltype(MoveFileExA)>;
using DeleteHook = ImportHook<"DeleteFileA", decltype(DeleteFileA)>;
using SecureHook = ImportHook<"SetFileSecurityA", decltype(SetFileSecurityA)>;
using CheckHook = ImportHook<"GetFileSecurityA", decltype(GetFileSecurityA)>;

// Opening a file fails for as long as it lives.
class OpenFails {
 public:
  OpenFails(const std::string& path, DWORD disposition) {
    hook_.replaceWith([this, path, disposition](LPCSTR name, DWORD access, DWORD sharing,
                                                LPSECURITY_ATTRIBUTES security, DWORD how, DWORD flags,
                                                HANDLE pattern) {
      if (name != path || how != disposition) {
        return hook_.callOriginal(name, access, sharing, security, how, flags, pattern);
      }
      SetLastError(kRareError);
      return INVALID_HANDLE_VALUE;
    });
  }

 private:
  CreateHook hook_;
};

// A disk with so many bytes left: a line that does not fit is written in part, and the rest is refused with the error
// of a full disk.
class FullDisk {
 public:
  explicit FullDisk(DWORD room) : room_(room) {
    hook_.replaceWith([this](HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
      if (room_ == 0) {
        *written = 0;
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
      }
      const DWORD part = size < room_ ? size : room_;
      room_ -= part;
      return hook_.callOriginal(file, bytes, part, written, overlapped);
    });
  }

 private:
  DWORD room_;
  WriteHook hook_;
};

}  // namespace tessel::test
