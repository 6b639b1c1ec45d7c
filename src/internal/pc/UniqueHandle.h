// Owners of what the system hands out. Each closes its resource and keeps the thread's last error.
#pragma once

#include <cstdlib>
#include <memory>
#include <utility>

#include "internal/pc/Platform.h"

namespace tessel::internal {

// Restores the thread's last error when the scope ends.
class KeepLastError {
 public:
  KeepLastError() noexcept : number_(GetLastError()) {}
  ~KeepLastError() { SetLastError(number_); }
  KeepLastError(const KeepLastError&) = delete;
  KeepLastError& operator=(const KeepLastError&) = delete;

 private:
  DWORD number_;
};

// Declared before a method's trace, it lets the caller find the number of the call that failed, whatever the trace of
// the exit does to it.
class LeaveLastError {
 public:
  LeaveLastError() noexcept = default;
  ~LeaveLastError() {
    if (number_ != NO_ERROR) SetLastError(number_);
  }
  LeaveLastError(const LeaveLastError&) = delete;
  LeaveLastError& operator=(const LeaveLastError&) = delete;

  // Takes the thread's number now.
  void take() noexcept { number_ = GetLastError(); }
  DWORD number() const noexcept { return number_; }

 private:
  DWORD number_ = NO_ERROR;
};

// A kernel handle; empty for null and for the invalid handle, whichever the system call uses.
class UniqueHandle {
 public:
  UniqueHandle() noexcept = default;
  explicit UniqueHandle(HANDLE handle) noexcept : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    reset(other.release());
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { reset(); }

  explicit operator bool() const noexcept { return handle_ != nullptr; }
  HANDLE get() const noexcept { return handle_; }
  // What a call reports on when it is given a handle that was never opened.
  HANDLE getOrInvalid() const noexcept { return handle_ ? handle_ : INVALID_HANDLE_VALUE; }
  HANDLE release() noexcept { return std::exchange(handle_, nullptr); }
  void reset(HANDLE handle = nullptr) noexcept {
    if (handle_) {
      const KeepLastError keep;
      CloseHandle(handle_);
    }
    handle_ = handle;
  }
  // For a handle whose closing can bring a failure to light; the last error then tells why.
  bool close() noexcept { return !handle_ || CloseHandle(release()) != 0; }
  // Where a system call writes the handle that it opens.
  HANDLE* receive() noexcept {
    reset();
    return &handle_;
  }

 private:
  HANDLE handle_ = nullptr;
};

// A loaded library.
class UniqueModule {
 public:
  explicit UniqueModule(HMODULE module) noexcept : module_(module) {}
  UniqueModule(const UniqueModule&) = delete;
  UniqueModule& operator=(const UniqueModule&) = delete;
  ~UniqueModule() {
    const KeepLastError keep;
    close();
  }

  explicit operator bool() const noexcept { return module_ != nullptr; }
  HMODULE get() const noexcept { return module_; }
  HMODULE release() noexcept { return std::exchange(module_, nullptr); }
  // The last error tells why it failed. The module is given up all the same.
  bool close() noexcept { return !module_ || FreeLibrary(release()) != 0; }

 private:
  HMODULE module_;
};

struct SidDeleter {
  void operator()(void* sid) const noexcept {
    const KeepLastError keep;
    FreeSid(sid);
  }
};
using UniqueSid = std::unique_ptr<void, SidDeleter>;

// What malloc and calloc gave.
struct HeapDeleter {
  void operator()(const void* block) const noexcept {
    const KeepLastError keep;
    std::free(const_cast<void*>(block));  // NOLINT(cppcoreguidelines-no-malloc): this is the owner
  }
};
using UniqueHeapBlock = std::unique_ptr<const void, HeapDeleter>;

}  // namespace tessel::internal
