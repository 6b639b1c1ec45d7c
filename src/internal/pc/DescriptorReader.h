// Reading the access list of a security descriptor that nobody vouches for.
#pragma once

#include <cstddef>

#include "internal/pc/Platform.h"

namespace tessel::internal {

struct AccessEntry {
  BYTE type;
  BYTE flags;
  DWORD mask;  // 0 for types other than access-allowed and access-denied
  PSID sid;    // in the block; null for the other types
};

enum class EntryRead { done, end, failed };

// Reads a self-relative descriptor entry by entry. Descriptor, list, entry and principal are each compared with the
// size of the block before they are looked at; on failure the thread's last error tells what does not fit.
class DescriptorReader {
 public:
  // The block is not owned.
  DescriptorReader(const void* block, std::size_t size) noexcept;

  // False when the list cannot be found or does not lie in the block.
  bool findList();

  // Whether there is a list, which says who has access. Without one everybody has every access.
  bool hasList() const noexcept { return list_ != nullptr; }

  // The next entry; types other than access-allowed and access-denied come without mask and principal.
  EntryRead next(AccessEntry& entry);

 private:
  bool readEntry(const std::byte* ace, AccessEntry& entry) const;
  bool readPrincipal(const std::byte* ace, std::size_t size, AccessEntry& entry) const;

  const std::byte* block_;
  std::size_t size_;
  const std::byte* list_ = nullptr;
  std::size_t listSize_ = 0;
  DWORD count_ = 0;
  DWORD index_ = 0;
};

}  // namespace tessel::internal
