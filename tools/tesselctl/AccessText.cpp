#include "AccessText.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tesselctl {
namespace {

constexpr unsigned kObjectInherit = 1;
constexpr unsigned kContainerInherit = 2;
constexpr unsigned kNoPropagate = 4;
constexpr unsigned kInheritOnly = 8;
constexpr unsigned kInherited = 16;
constexpr unsigned kDeny = 1;

struct Right {
  std::uint32_t bits;
  const char* name;
};

constexpr std::array<Right, 4> kGeneric{{{0x10000000, "generic all"},
                                         {0x80000000, "generic read"},
                                         {0x40000000, "generic write"},
                                         {0x20000000, "generic execute"}}};

// What the generic rights stand for, in the same order.
constexpr std::array<std::uint32_t, 4> kMapped{0x1F01FF, 0x120089, 0x120116, 0x1200A0};

// Named together when all bits are there; they share some.
constexpr std::array<Right, 5> kSets{{{0x1F01FF, "full control"},
                                      {0x120089, "read"},
                                      {0x120116, "write"},
                                      {0x1200A0, "execute"},
                                      {0x1F0000, "all standard rights"}}};

constexpr std::array<Right, 14> kSingle{{{0x1, "read data"},
                                         {0x2, "write data"},
                                         {0x4, "append data"},
                                         {0x8, "read extended attributes"},
                                         {0x10, "write extended attributes"},
                                         {0x20, "traverse"},
                                         {0x40, "delete children"},
                                         {0x80, "read attributes"},
                                         {0x100, "write attributes"},
                                         {0x10000, "delete"},
                                         {0x20000, "read permissions"},
                                         {0x40000, "change permissions"},
                                         {0x80000, "take ownership"},
                                         {0x100000, "synchronize"}}};

std::string hexadecimal(std::uint32_t value, const char* format) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(value));
  return text.data();
}

void append(std::string& list, const std::string& item) { list += (list.empty() ? "" : ", ") + item; }

// Whether the second entry is what the first one hands down.
bool belongTogether(const Access& here, const Access& below) {
  constexpr unsigned kScope = kObjectInherit | kContainerInherit | kNoPropagate | kInheritOnly;
  return here.type == below.type && here.type <= kDeny && here.principal == below.principal &&
         (here.flags & kScope) == 0 && (below.flags & kInheritOnly) != 0 &&
         (below.flags & (kObjectInherit | kContainerInherit)) != 0 &&
         (here.flags & kInherited) == (below.flags & kInherited) && mappedRights(here.mask) == mappedRights(below.mask);
}

}  // namespace

std::uint32_t mappedRights(std::uint32_t mask) {
  for (std::size_t i = 0; i < kGeneric.size(); ++i) {
    if ((mask & kGeneric.at(i).bits) != 0) mask = (mask & ~kGeneric.at(i).bits) | kMapped.at(i);
  }
  return mask;
}

std::vector<Access> folded(const std::vector<Access>& entries) {
  std::vector<Access> result;
  for (const Access& entry : entries) {
    if (!result.empty() && belongTogether(result.back(), entry)) {
      result.back().flags = entry.flags & ~kInheritOnly;
      result.back().mask = entry.mask;
    } else {
      result.push_back(entry);
    }
  }
  return result;
}

std::string typeText(unsigned type) {
  if (type > kDeny) return "type " + std::to_string(type);
  return type == kDeny ? "deny" : "allow";
}

std::string rightsText(std::uint32_t mask) {
  std::string names;
  std::uint32_t rest = mask;
  const auto name = [&](const Right& right) {
    append(names, right.name);
    rest &= ~right.bits;
  };
  for (const Right& right : kGeneric) {
    if ((mask & right.bits) != 0) name(right);
  }
  for (const Right& set : kSets) {
    if ((mask & set.bits) == set.bits && (rest & set.bits) != 0) name(set);
  }
  for (const Right& right : kSingle) {
    if ((rest & right.bits) != 0) name(right);
  }
  if (rest != 0) append(names, hexadecimal(rest, "0x%x"));
  return names.empty() ? "no rights" : names;
}

std::string scopeText(unsigned flags) {
  std::string scope = (flags & kInheritOnly) != 0 ? "" : "here";
  const bool files = (flags & kObjectInherit) != 0;
  const bool folders = (flags & kContainerInherit) != 0;
  if (files || folders) {
    append(scope, std::string(folders ? "folders" : "") + (folders && files ? " and " : "") + (files ? "files" : "") +
                      ((flags & kNoPropagate) != 0 ? " one level below" : " below"));
  }
  if ((flags & kInherited) != 0) append(scope, "inherited");
  return scope.empty() ? "nowhere" : scope;
}

std::string lineOf(const Access& access, std::size_t principalWidth) {
  std::string principal = access.principal;
  principal.resize(std::max(principal.size(), principalWidth), ' ');
  std::string type = typeText(access.type);
  type.resize(std::max(type.size(), typeText(0).size()), ' ');
  // Of other types neither rights nor principal were read.
  const bool known = access.type <= kDeny;
  const std::string number = known ? hexadecimal(access.mask, "0x%08x") : std::string(10, ' ');
  const std::string rights = known ? rightsText(access.mask) : "not shown";
  return type + "  " + principal + "  " + number + "  " + rights + " (" + scopeText(access.flags) + ")";
}

}  // namespace tesselctl
