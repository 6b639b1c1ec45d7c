// Access lists in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tesselctl {

struct Access {
  unsigned type;       // 0 allows, 1 denies
  unsigned flags;      // what it applies to
  std::uint32_t mask;  // the rights
  std::string principal;
  bool operator==(const Access&) const = default;
};

// The rights of a file that generic rights stand for, in place of the generic ones.
std::uint32_t mappedRights(std::uint32_t mask);

// NTFS stores an entry that is handed down and has generic rights as two: one for the directory, with the rights they
// stand for, and one to hand down, as it was. Puts such pairs together again; everything else stays.
std::vector<Access> folded(const std::vector<Access>& entries);

// "allow", "deny" or "type N".
std::string typeText(unsigned type);

// The names of the rights, generic ones as such; "no rights" for 0.
std::string rightsText(std::uint32_t mask);

// "here", "here, folders and files below, inherited"...
std::string scopeText(unsigned flags);

// The entry on a line, the principal padded to that width. The rights of a "type N" are not shown: nobody read them.
std::string lineOf(const Access& access, std::size_t principalWidth);

}  // namespace tesselctl
