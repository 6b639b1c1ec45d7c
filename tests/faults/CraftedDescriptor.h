// A file whose security descriptor is what a test says.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/ImportHook.h"

namespace tessel::test {

// As long as it lives the library reads this descriptor for every path. The block that it reads it into ends where
// the memory ends: a read behind it is an access violation.
class CraftedDescriptor {
 public:
  explicit CraftedDescriptor(const std::string& bytes) : bytes_(bytes) {
    guardMemory();
    read_.replaceWith([this](LPCSTR, SECURITY_INFORMATION wanted, PSECURITY_DESCRIPTOR block, DWORD size,
                             LPDWORD needed) -> BOOL { return answer(wanted, block, size, needed); });
    allocate_.replaceWith([this](std::size_t count, std::size_t size) { return allocate(count, size); });
    free_.replaceWith([this](void* block) { release(block); });
    sizeOf_.replaceWith([this](void* block) { return block == block_ ? bytes_.size() : sizeOf_.callOriginal(block); });
  }
  ~CraftedDescriptor() {
    EXPECT_EQ(allocated_, released_) << "the block was not released";
    VirtualFree(memory_, 0, MEM_RELEASE);
  }
  CraftedDescriptor(const CraftedDescriptor&) = delete;
  CraftedDescriptor& operator=(const CraftedDescriptor&) = delete;

  unsigned blocks() const { return allocated_; }

 private:
  static constexpr std::size_t kPage = 4096;

  void guardMemory() {
    const std::size_t room = (bytes_.size() / kPage + 1) * kPage;
    memory_ = static_cast<char*>(VirtualAlloc(nullptr, room + kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD before = 0;
    EXPECT_TRUE(VirtualProtect(memory_ + room, kPage, PAGE_NOACCESS, &before));
    block_ = memory_ + room - bytes_.size();
  }

  BOOL answer(SECURITY_INFORMATION wanted, PSECURITY_DESCRIPTOR block, DWORD size, LPDWORD needed) {
    EXPECT_EQ(wanted, static_cast<DWORD>(DACL_SECURITY_INFORMATION));
    *needed = static_cast<DWORD>(bytes_.size());
    announced_ = true;
    if (!block) {
      SetLastError(ERROR_INSUFFICIENT_BUFFER);
      return FALSE;
    }
    EXPECT_EQ(size, bytes_.size());
    std::memcpy(block, bytes_.data(), bytes_.size());
    return TRUE;
  }

  // The first block of that size behind the question for it is the one.
  void* allocate(std::size_t count, std::size_t size) {
    if (!announced_ || count * size != bytes_.size()) return allocate_.callOriginal(count, size);
    announced_ = false;
    ++allocated_;
    return std::memset(block_, 0, bytes_.size());
  }

  void release(void* block) {
    if (block == block_ && block) {
      ++released_;
    } else {
      free_.callOriginal(block);
    }
  }

  const std::string bytes_;
  char* memory_ = nullptr;
  char* block_ = nullptr;
  bool announced_ = false;
  unsigned allocated_ = 0;
  unsigned released_ = 0;
  ImportHook<"GetFileSecurityA", decltype(GetFileSecurityA)> read_;
  ImportHook<"calloc", void*(std::size_t, std::size_t)> allocate_;
  ImportHook<"free", void(void*)> free_;
  ImportHook<"_msize", std::size_t(void*)> sizeOf_;
};

}  // namespace tessel::test
