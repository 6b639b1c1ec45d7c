// Security descriptors byte by byte: made for the library to read, and taken apart as the library made them.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

namespace tessel::test {

// Little-endian bytes of a number.
std::string bytesOf(DWORD value, unsigned count);

// A principal: revision, count of sub-authorities, authority, sub-authorities.
std::string sidOf(unsigned char authority, std::initializer_list<DWORD> subAuthorities);

inline const std::string kEveryone = sidOf(1, {0});
inline const std::string kAdministrators = sidOf(5, {32, 544});
inline const std::string kUsers = sidOf(5, {32, 545});
inline const std::string kGuests = sidOf(5, {32, 546});
inline const std::string kAuthenticated = sidOf(5, {11});
inline const std::string kSystem = sidOf(5, {18});

// The principal that this process runs as.
std::string currentUser();

// An entry of a list.
struct AceOf {
  unsigned type;
  unsigned flags;
  DWORD mask;
  std::string sid;
  bool operator==(const AceOf&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const AceOf& ace);

inline AceOf allow(DWORD mask, const std::string& sid, unsigned flags = 0) { return {0, flags, mask, sid}; }
inline AceOf deny(DWORD mask, const std::string& sid, unsigned flags = 0) { return {1, flags, mask, sid}; }

// The bytes of an entry; one that claims another size than it has.
std::string aceBytes(const AceOf& ace);
std::string aceBytes(const AceOf& ace, unsigned claimedSize);

// The bytes of a list around the bytes of its entries; one that claims another size or count than it has.
std::string aclBytes(const std::string& entries, unsigned count);
std::string aclBytes(const std::string& entries, unsigned count, unsigned claimedSize);

// A self-relative descriptor with the list right behind its header.
std::string descriptorWith(const std::string& acl);
std::string descriptorWith(std::initializer_list<AceOf> entries);
std::string descriptorOf(DWORD revision, DWORD control, DWORD listOffset, const std::string& rest);

// What the system takes for the list of a descriptor.
struct ListOf {
  unsigned revision;
  unsigned size;
  std::vector<AceOf> entries;
};
ListOf listIn(PSECURITY_DESCRIPTOR descriptor);

}  // namespace tessel::test
