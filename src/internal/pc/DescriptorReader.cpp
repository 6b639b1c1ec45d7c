#include "internal/pc/DescriptorReader.h"

#include <cstdint>
#include <cstring>

namespace tessel::internal {
namespace {

// A sound descriptor aligns its parts, this one may not.
template <class T>
T copyAt(const void* place) {
  T value{};
  std::memcpy(&value, place, sizeof value);
  return value;
}

// How much of a range of `size` bytes lies at and behind the place; 0 for a place that is not in it.
std::size_t roomBehind(const void* place, const void* start, std::size_t size) {
  const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(place) - reinterpret_cast<std::uintptr_t>(start);
  return offset < size ? size - offset : 0;
}

bool refuse(DWORD error) {
  SetLastError(error);
  return false;
}

}  // namespace

DescriptorReader::DescriptorReader(const void* block, std::size_t size) noexcept
    : block_(static_cast<const std::byte*>(block)), size_(size) {}

bool DescriptorReader::findList() {
  // Of a descriptor that is not self-relative the system would take the list's address as it stands there.
  if (size_ < sizeof(SECURITY_DESCRIPTOR_RELATIVE) ||
      (copyAt<SECURITY_DESCRIPTOR_RELATIVE>(block_).Control & SE_SELF_RELATIVE) == 0) {
    return refuse(ERROR_INVALID_SECURITY_DESCR);
  }
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  ACL* list = nullptr;
  if (!GetSecurityDescriptorDacl(const_cast<std::byte*>(block_), &present, &list, &defaulted)) return false;
  if (!present || !list) return true;
  const std::size_t room = roomBehind(list, block_, size_);
  if (room < sizeof(ACL)) return refuse(ERROR_INVALID_ACL);
  const auto header = copyAt<ACL>(list);
  if (room < header.AclSize) return refuse(ERROR_INVALID_ACL);
  list_ = reinterpret_cast<const std::byte*>(list);
  listSize_ = header.AclSize;
  count_ = header.AceCount;
  return true;
}

EntryRead DescriptorReader::next(AccessEntry& entry) {
  if (listSize_ < sizeof(ACL)) {
    SetLastError(ERROR_INVALID_ACL);
    return EntryRead::failed;
  }
  if (index_ == count_) return EntryRead::end;
  // The system goes over the entries before this one by their sizes, which were found to fit.
  void* ace = nullptr;
  ACL* list = reinterpret_cast<ACL*>(const_cast<std::byte*>(list_));
  if (!GetAce(list, index_, &ace) || !readEntry(static_cast<std::byte*>(ace), entry)) return EntryRead::failed;
  ++index_;
  return EntryRead::done;
}

bool DescriptorReader::readEntry(const std::byte* ace, AccessEntry& entry) const {
  const std::size_t room = roomBehind(ace, list_, listSize_);
  if (room < sizeof(ACE_HEADER)) return refuse(ERROR_INVALID_ACL);
  const auto header = copyAt<ACE_HEADER>(ace);
  if (header.AceSize < sizeof header || header.AceSize > room) return refuse(ERROR_INVALID_ACL);
  entry = {header.AceType, header.AceFlags, 0, nullptr};
  const bool hasPrincipal = header.AceType == ACCESS_ALLOWED_ACE_TYPE || header.AceType == ACCESS_DENIED_ACE_TYPE;
  return !hasPrincipal || readPrincipal(ace, header.AceSize, entry);
}

bool DescriptorReader::readPrincipal(const std::byte* ace, std::size_t size, AccessEntry& entry) const {
  constexpr std::size_t kMaskOffset = offsetof(ACCESS_ALLOWED_ACE, Mask);
  constexpr std::size_t kSidOffset = offsetof(ACCESS_ALLOWED_ACE, SidStart);
  constexpr std::size_t kFixedPartOfSid = offsetof(SID, SubAuthority);
  if (size < kSidOffset + kFixedPartOfSid) return refuse(ERROR_INVALID_ACL);
  const std::byte* sid = ace + kSidOffset;
  const auto revision = copyAt<BYTE>(sid + offsetof(SID, Revision));
  const auto subAuthorities = copyAt<BYTE>(sid + offsetof(SID, SubAuthorityCount));
  if (revision != SID_REVISION || subAuthorities > SID_MAX_SUB_AUTHORITIES ||
      size < kSidOffset + kFixedPartOfSid + subAuthorities * sizeof(DWORD)) {
    return refuse(ERROR_INVALID_SID);
  }
  entry.mask = copyAt<DWORD>(ace + kMaskOffset);
  entry.sid = const_cast<std::byte*>(sid);
  return true;
}

}  // namespace tessel::internal
