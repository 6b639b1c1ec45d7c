// How the operators' tool shows access lists.
#include <gtest/gtest.h>

#include "tesselctl/AccessText.h"

namespace tesselctl {
namespace {

constexpr unsigned kBoth = 3;
constexpr unsigned kInheritOnly = 8;
constexpr unsigned kInherited = 16;

using Entries = std::vector<Access>;

TEST(AccessText, GenericRightsStandForThoseOfAFile) {
  EXPECT_EQ(mappedRights(0x80000000), 0x120089U);
  EXPECT_EQ(mappedRights(0x40000000), 0x120116U);
  EXPECT_EQ(mappedRights(0x20000000), 0x1200A0U);
  EXPECT_EQ(mappedRights(0x10000000), 0x1F01FFU);
  EXPECT_EQ(mappedRights(0xE01F0000), 0x1F01BFU);
  EXPECT_EQ(mappedRights(0x1F01BF), 0x1F01BFU);
  EXPECT_EQ(mappedRights(0), 0U);
}

TEST(AccessText, WhatNtfsSplitsIsFolded) {
  const Entries split{{0, 0, 0x1F01BF, "user"},
                      {0, kBoth | kInheritOnly, 0xE01F0000, "user"},
                      {0, 0, 0x1200A9, "Everyone"},
                      {0, kBoth | kInheritOnly, 0xA0000000, "Everyone"}};
  EXPECT_EQ(folded(split), (Entries{{0, kBoth, 0xE01F0000, "user"}, {0, kBoth, 0xA0000000, "Everyone"}}));
}

TEST(AccessText, InheritedAndDenyingPairsAreFoldedToo) {
  EXPECT_EQ(folded({{1, kInherited, 0x120089, "a"}, {1, kInherited | kInheritOnly | 2, 0x80000000, "a"}}),
            (Entries{{1, kInherited | 2, 0x80000000, "a"}}));
}

TEST(AccessText, OnlyAPairOfOneEntryIsFolded) {
  const Access here{0, 0, 0x120089, "a"};
  const Entries others{
      {1, kBoth | kInheritOnly, 0x80000000, "a"}, {0, kBoth | kInheritOnly, 0x80000000, "b"},
      {0, kBoth | kInheritOnly, 0x40000000, "a"}, {0, kBoth, 0x80000000, "a"},
      {0, kInheritOnly, 0x80000000, "a"},         {0, kBoth | kInheritOnly | kInherited, 0x80000000, "a"}};
  for (const Access& other : others) EXPECT_EQ(folded({here, other}), (Entries{here, other}));
  const Access below{0, kBoth | kInheritOnly, 0x80000000, "a"};
  const Access between{0, 0, 1, "b"};
  EXPECT_EQ(folded({here, between, below}), (Entries{here, between, below}));
  EXPECT_EQ(folded({below, here}), (Entries{below, here}));
  EXPECT_EQ(folded({{5, 0, 0, "-"}, {5, kBoth | kInheritOnly, 0, "-"}}).size(), 2U);
  EXPECT_EQ(folded({}), Entries());
}

TEST(AccessText, NamesTheType) {
  EXPECT_EQ(typeText(0), "allow");
  EXPECT_EQ(typeText(1), "deny");
  EXPECT_EQ(typeText(5), "type 5");
}

TEST(AccessText, NamesGenericRights) {
  EXPECT_EQ(rightsText(0xE01F0000), "generic read, generic write, generic execute, all standard rights");
  EXPECT_EQ(rightsText(0x80000000), "generic read");
  EXPECT_EQ(rightsText(0x10000000), "generic all");
}

TEST(AccessText, NamesRightsTogetherWhenAllOfThemAreThere) {
  EXPECT_EQ(rightsText(0x1F01FF), "full control");
  EXPECT_EQ(rightsText(0x1201BF), "read, write, execute");
  EXPECT_EQ(rightsText(0x1F01BF), "read, write, execute, all standard rights");
  EXPECT_EQ(rightsText(0x120089), "read");
  EXPECT_EQ(rightsText(0x120088), "read extended attributes, read attributes, read permissions, synchronize");
}

TEST(AccessText, NamesEverySingleRight) {
  EXPECT_EQ(rightsText(0x1), "read data");
  EXPECT_EQ(rightsText(0x40), "delete children");
  EXPECT_EQ(rightsText(0x50000), "delete, change permissions");
  EXPECT_EQ(rightsText(0x80000), "take ownership");
}

TEST(AccessText, ShowsRightsWithoutANameAsANumber) {
  EXPECT_EQ(rightsText(0x01000200), "0x1000200");
  EXPECT_EQ(rightsText(0x03000001), "read data, 0x3000000");
  EXPECT_EQ(rightsText(0), "no rights");
}

TEST(AccessText, TellsWhereAnEntryApplies) {
  EXPECT_EQ(scopeText(0), "here");
  EXPECT_EQ(scopeText(kBoth), "here, folders and files below");
  EXPECT_EQ(scopeText(1), "here, files below");
  EXPECT_EQ(scopeText(2 | 4), "here, folders one level below");
  EXPECT_EQ(scopeText(kBoth | kInheritOnly), "folders and files below");
  EXPECT_EQ(scopeText(kInherited), "here, inherited");
  EXPECT_EQ(scopeText(kInheritOnly), "nowhere");
}

TEST(AccessText, AnEntryIsALine) {
  EXPECT_EQ(lineOf({0, kBoth, 0xA0000000, "Everyone"}, 10),
            "allow  Everyone    0xa0000000  generic read, generic execute (here, folders and files below)");
  EXPECT_EQ(lineOf({1, 0, 1, "a long name"}, 3), "deny   a long name  0x00000001  read data (here)");
}

TEST(AccessText, AnEntryOfAnotherTypeClaimsNothingAboutItsRights) {
  EXPECT_EQ(lineOf({9, kBoth, 0, "-"}, 3), "type 9  -                not shown (here, folders and files below)");
  EXPECT_EQ(lineOf({0, 0, 0, "-"}, 4), "allow  -     0x00000000  no rights (here)");
}

}  // namespace
}  // namespace tesselctl
