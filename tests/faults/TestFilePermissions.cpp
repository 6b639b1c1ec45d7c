// What checkFilePermissions makes of security descriptors, sound ones and others.
#include <tessel/FilePermissionsException.h>
#include <tessel/NYXUtils.h>

#include "faults/CraftedDescriptor.h"
#include "support/Descriptors.h"
#include "support/PipePeers.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

constexpr DWORD kFull = 0x1FFFFF;
constexpr DWORD kRead = FILE_GENERIC_READ;
constexpr unsigned kInherited = INHERITED_ACE;
constexpr unsigned kInheritOnly = INHERIT_ONLY_ACE;
constexpr DWORD kSound = SE_DACL_PRESENT | SE_SELF_RELATIVE;
constexpr DWORD kHeader = sizeof(SECURITY_DESCRIPTOR_RELATIVE);

const std::string kPath = "C:\\a file.properties";

// The message of the refusal, empty when there is none.
std::string verdict(const std::string& descriptor) {
  const CraftedDescriptor file(descriptor);
  try {
    NYXUtils::checkFilePermissions(kPath);
    return "";
  } catch (const FilePermissionsException& exception) {
    return exception.getMessage();
  }
}

std::string groupHasAccess(const std::string& group) { return messageText("KTBNV0145_GROUP_HAS_ACCESS", group, kPath); }
std::string everybodyHasAccess() { return messageText("KTBNV0146_ALL_USERS_HAVE_ACCESS", kPath); }
std::string noList(DWORD error) {
  return messageText("KTBNV0144_GETSECURITYDESCRIPTORDACL_ERROR", systemText(error), kPath);
}
std::string noEntry(DWORD error) { return messageText("KTBNV0147_GETACE_ERROR", systemText(error), kPath); }

using Entries = std::initializer_list<AceOf>;

void expectPasses(Entries entries) { EXPECT_EQ(verdict(descriptorWith(entries)), ""); }
void expectRefused(const std::string& group, Entries entries) {
  EXPECT_EQ(verdict(descriptorWith(entries)), groupHasAccess(group));
}

// A descriptor with one list of these raw entries.
std::string listOf(const std::string& entries, unsigned count) { return descriptorWith(aclBytes(entries, count)); }

TEST(FilePermissions, AnEmptyListLetsNobodyIn) { expectPasses({}); }

TEST(FilePermissions, TheUserAndAdministratorsMayDoEverything) {
  expectPasses({allow(kFull, currentUser()), allow(kFull, kAdministrators), allow(kFull, kSystem)});
}

TEST(FilePermissions, EachWatchedGroupIsRefusedByItsName) {
  expectRefused("Guests", {allow(kRead, kGuests)});
  expectRefused("Users", {allow(kRead, kUsers)});
  expectRefused("Everyone", {allow(kRead, kEveryone)});
}

TEST(FilePermissions, EverySingleRightIsTooMuch) {
  for (DWORD bit = 1; bit <= kFull; bit <<= 1U) {
    expectRefused("Users", {allow(bit, kUsers)});
    expectRefused("Guests", {allow(bit, kGuests)});
    expectRefused("Everyone", {allow(bit, kEveryone)});
  }
}

TEST(FilePermissions, AnEntryWithoutRightsIsHarmless) {
  expectPasses({allow(0, kEveryone), allow(0, kUsers), allow(0, kGuests)});
}

TEST(FilePermissions, GenericRightsPass) {
  expectPasses({allow(GENERIC_ALL, kUsers)});
  expectPasses({allow(GENERIC_READ | GENERIC_EXECUTE, kEveryone)});
  for (DWORD bit = 0x200000; bit != 0; bit <<= 1U) expectPasses({allow(bit, kEveryone)});
}

TEST(FilePermissions, OtherGroupsAreNotLookedAt) {
  expectPasses({allow(kFull, kAuthenticated)});
  expectPasses({allow(kFull, sidOf(5, {32})), allow(kFull, sidOf(5, {32, 545, 1})), allow(kFull, sidOf(5, {32, 547}))});
  expectPasses({allow(kFull, sidOf(1, {1})), allow(kFull, sidOf(0, {0})), allow(kFull, sidOf(5, {545}))});
}

TEST(FilePermissions, APrincipalMayHaveFifteenSubAuthoritiesAndNone) {
  expectPasses(
      {allow(kFull, sidOf(5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15})), allow(kFull, sidOf(5, {}))});
}

TEST(FilePermissions, AFullDenialBeforeIsEnough) {
  expectPasses({deny(kFull, kUsers), allow(kFull, kUsers)});
  expectPasses({deny(kFull, kGuests), allow(kFull, kGuests)});
  expectPasses({deny(kFull, kEveryone), allow(kFull, kEveryone)});
  expectPasses({deny(0xFFFFFFFF, kUsers), allow(kRead, kUsers), allow(kFull, kUsers)});
  expectPasses({deny(kFull, kUsers), allow(kFull, kAdministrators), allow(kRead, kUsers)});
}

TEST(FilePermissions, ADenialAloneLetsNobodyIn) { expectPasses({deny(kRead, kUsers), deny(kFull, kEveryone)}); }

TEST(FilePermissions, ADenialBehindIsTooLate) { expectRefused("Users", {allow(kRead, kUsers), deny(kFull, kUsers)}); }

TEST(FilePermissions, ADenialThatLacksOneRightDoesNotCount) {
  for (DWORD bit = 1; bit <= kFull; bit <<= 1U) {
    expectRefused("Users", {deny(kFull & ~bit, kUsers), allow(kFull, kUsers)});
  }
}

// All rights that a file has; the check asks for more.
TEST(FilePermissions, ADenialOfAllFileRightsIsNotFull) {
  ASSERT_EQ(static_cast<DWORD>(FILE_ALL_ACCESS), 0x1F01FFU);
  expectRefused("Users", {deny(FILE_ALL_ACCESS, kUsers), allow(kRead, kUsers)});
}

TEST(FilePermissions, GenericOrEmptyDenialsDoNotCount) {
  expectRefused("Users", {deny(GENERIC_ALL, kUsers), allow(kRead, kUsers)});
  expectRefused("Users", {deny(0, kUsers), allow(kRead, kUsers)});
}

TEST(FilePermissions, DenialsAreNotAddedUp) {
  expectRefused("Users", {deny(0x1F0000, kUsers), deny(0xFFFF, kUsers), allow(kRead, kUsers)});
}

TEST(FilePermissions, ADenialIsOfItsOwnGroupOnly) {
  expectRefused("Users", {deny(kFull, kEveryone), allow(kRead, kUsers)});
  expectRefused("Everyone", {deny(kFull, kUsers), deny(kFull, kGuests), allow(kRead, kEveryone)});
  expectRefused("Guests", {deny(kFull, kUsers), allow(kFull, kUsers), allow(kRead, kGuests)});
}

TEST(FilePermissions, TheFirstGroupInTheListIsNamed) {
  expectRefused("Everyone", {allow(0, kGuests), allow(kRead, kEveryone), allow(kRead, kUsers)});
}

TEST(FilePermissions, InheritedEntriesCountLikeOthers) {
  expectRefused("Users", {allow(kRead, kUsers, kInherited)});
  expectPasses({deny(kFull, kUsers, kInherited), allow(kFull, kUsers, kInherited)});
}

TEST(FilePermissions, InheritOnlyEntriesCountLikeOthers) {
  expectRefused("Users", {allow(kRead, kUsers, kInheritOnly | OBJECT_INHERIT_ACE)});
  expectPasses({deny(kFull, kUsers, kInheritOnly), allow(kRead, kUsers)});
}

TEST(FilePermissions, OtherTypesOfEntriesArePassedOver) {
  for (const unsigned type : {2U, 3U, 4U, 5U, 9U, 17U, 255U}) {
    expectPasses({{type, 0, kFull, kUsers}});
    expectRefused("Users", {{type, 0, kFull, kEveryone}, allow(kRead, kUsers)});
  }
}

TEST(FilePermissions, OtherTypesArePassedOverByTheirSizeWhateverIsInThem) {
  const std::string users = aceBytes(allow(kRead, kUsers));
  EXPECT_EQ(verdict(listOf(bytesOf(5, 2) + bytesOf(4, 2) + users, 2)), groupHasAccess("Users"));
  EXPECT_EQ(verdict(listOf(bytesOf(9, 2) + bytesOf(12, 2) + std::string(8, '\xFF') + users, 2)),
            groupHasAccess("Users"));
  EXPECT_EQ(verdict(listOf(bytesOf(2, 2) + bytesOf(5, 2) + 'x' + users, 2)), groupHasAccess("Users"));
}

TEST(FilePermissions, AnEntryMayBeLongerThanItsPrincipal) {
  EXPECT_EQ(verdict(listOf(aceBytes(allow(kFull, kAdministrators + std::string(8, '\xFF'))), 1)), "");
  EXPECT_EQ(verdict(listOf(aceBytes(allow(kFull, kUsers + std::string(8, '\xFF'))), 1)), groupHasAccess("Users"));
}

TEST(FilePermissions, BytesBehindTheEntriesAndBehindTheListAreNotLookedAt) {
  const std::string own = aceBytes(allow(kFull, kAdministrators));
  const std::string users = aceBytes(allow(kFull, kUsers));
  EXPECT_EQ(verdict(listOf(own + users, 1)), "");
  EXPECT_EQ(verdict(descriptorWith(aclBytes(own, 1) + users)), "");
}

TEST(FilePermissions, TheLastOfAThousandEntriesCounts) {
  std::string entries;
  for (int i = 0; i < 999; ++i) entries += aceBytes(allow(kFull, kAdministrators));
  EXPECT_EQ(verdict(listOf(entries + aceBytes(allow(1, kGuests)), 1000)), groupHasAccess("Guests"));
  EXPECT_EQ(verdict(listOf(entries + aceBytes(allow(0, kGuests)), 1000)), "");
}

TEST(FilePermissions, TheListMayLieAnywhereInTheBlock) {
  const std::string list = aclBytes(aceBytes(allow(kFull, kUsers)), 1);
  for (const unsigned gap : {1U, 2U, 4U, 100U}) {
    EXPECT_EQ(verdict(descriptorOf(1, kSound, kHeader + gap, std::string(gap, '\xFF') + list)),
              groupHasAccess("Users"));
  }
}

TEST(FilePermissions, ADefaultedListCounts) {
  const std::string list = aclBytes(aceBytes(allow(kFull, kUsers)), 1);
  EXPECT_EQ(verdict(descriptorOf(1, kSound | SE_DACL_DEFAULTED, kHeader, list)), groupHasAccess("Users"));
}

// Entries that come from the folder can change with the folder; nobody asks for the bit that prevents it.
TEST(FilePermissions, AListThatIsNotProtectedPasses) {
  const std::string list = aclBytes(aceBytes(allow(kFull, kAdministrators, kInherited)), 1);
  EXPECT_EQ(verdict(descriptorOf(1, kSound, kHeader, list)), "");
  EXPECT_EQ(verdict(descriptorOf(1, kSound | SE_DACL_PROTECTED, kHeader, list)), "");
}

TEST(FilePermissions, WithoutAListEverybodyHasAccess) {
  EXPECT_EQ(verdict(descriptorOf(1, SE_SELF_RELATIVE, 0, "")), everybodyHasAccess());
}

TEST(FilePermissions, WithANullListEverybodyHasAccess) {
  EXPECT_EQ(verdict(descriptorOf(1, kSound, 0, "")), everybodyHasAccess());
}

TEST(FilePermissions, AListThatIsNotPresentIsNotLookedAt) {
  const std::string list = aclBytes(aceBytes(allow(kFull, kAdministrators)), 1);
  EXPECT_EQ(verdict(descriptorOf(1, SE_SELF_RELATIVE, kHeader, list)), everybodyHasAccess());
  EXPECT_EQ(verdict(descriptorOf(1, SE_SELF_RELATIVE, 0xFFFFFFFF, "")), everybodyHasAccess());
}

TEST(FilePermissions, ABlockTooSmallForADescriptorIsRefused) {
  const std::string whole = descriptorOf(1, kSound, 0, "");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(verdict(whole.substr(0, size)), noList(ERROR_INVALID_SECURITY_DESCR)) << size;
  }
}

TEST(FilePermissions, ADescriptorWithAddressesInPlaceOfOffsetsIsRefused) {
  EXPECT_EQ(verdict(descriptorOf(1, SE_DACL_PRESENT, kHeader, std::string(100, '\1'))),
            noList(ERROR_INVALID_SECURITY_DESCR));
}

TEST(FilePermissions, ADescriptorOfAnotherRevisionIsRefused) {
  EXPECT_EQ(verdict(descriptorOf(2, kSound, kHeader, aclBytes("", 0))), noList(ERROR_UNKNOWN_REVISION));
}

TEST(FilePermissions, AListOutsideTheBlockIsRefused) {
  const std::string list = aclBytes(aceBytes(allow(kFull, kAdministrators)), 1);
  const auto end = static_cast<DWORD>(kHeader + list.size());
  for (const DWORD offset : {end, end + 1, end - 7, 0x7FFFFFFFUL, 0x80000000UL, 0xFFFFFFFFUL}) {
    EXPECT_EQ(verdict(descriptorOf(1, kSound, offset, list)), noList(ERROR_INVALID_ACL)) << offset;
  }
}

TEST(FilePermissions, AListThatReachesBeyondTheBlockIsRefused) {
  const std::string entries = aceBytes(allow(kFull, kAdministrators));
  const auto size = static_cast<unsigned>(8 + entries.size());
  for (const unsigned claimed : {size + 1, size + 4, 0xFFFFU}) {
    EXPECT_EQ(verdict(descriptorWith(aclBytes(entries, 1, claimed))), noList(ERROR_INVALID_ACL)) << claimed;
  }
}

TEST(FilePermissions, AListSmallerThanItsHeaderIsRefused) {
  for (const unsigned claimed : {0U, 4U, 7U}) {
    EXPECT_EQ(verdict(descriptorWith(aclBytes("", 0, claimed))), noEntry(ERROR_INVALID_ACL)) << claimed;
    EXPECT_EQ(verdict(descriptorWith(aclBytes(aceBytes(allow(kFull, kAdministrators)), 1, claimed))),
              noEntry(ERROR_INVALID_ACL));
  }
}

TEST(FilePermissions, MoreEntriesThanTheListHoldsAreRefused) {
  const std::string own = aceBytes(allow(kFull, kAdministrators));
  EXPECT_EQ(verdict(listOf("", 1)), noEntry(ERROR_INVALID_ACL));
  EXPECT_EQ(verdict(listOf(own, 2)), noEntry(ERROR_INVALID_ACL));
  EXPECT_EQ(verdict(listOf(own, 0xFFFF)), noEntry(ERROR_INVALID_ACL));
  // The block goes on, the list does not.
  EXPECT_EQ(verdict(descriptorWith(aclBytes(own, 2) + own)), noEntry(ERROR_INVALID_ACL));
}

TEST(FilePermissions, AnEntryWhoseHeaderDoesNotFitIsRefused) {
  const std::string own = aceBytes(allow(kFull, kAdministrators));
  for (const unsigned room : {1U, 2U, 3U}) {
    EXPECT_EQ(verdict(listOf(own + own.substr(0, room), 2)), noEntry(ERROR_INVALID_ACL)) << room;
  }
}

TEST(FilePermissions, AnEntryThatReachesBeyondTheListIsRefused) {
  const auto size = static_cast<unsigned>(8 + kAdministrators.size());
  for (const unsigned type : {0U, 1U, 2U, 255U}) {
    for (const unsigned claimed : {size + 1, size + 4, 0xFFFFU}) {
      const std::string ace = aceBytes({type, 0, kFull, kAdministrators}, claimed);
      EXPECT_EQ(verdict(listOf(ace, 1)), noEntry(ERROR_INVALID_ACL)) << type << ' ' << claimed;
      EXPECT_EQ(verdict(descriptorWith(aclBytes(ace, 1) + std::string(4, '\0'))), noEntry(ERROR_INVALID_ACL));
    }
  }
}

TEST(FilePermissions, AnEntrySmallerThanItsHeaderIsRefused) {
  for (const unsigned type : {0U, 1U, 2U, 255U}) {
    for (const unsigned claimed : {0U, 3U}) {
      EXPECT_EQ(verdict(listOf(aceBytes({type, 0, kFull, kAdministrators}, claimed), 1)), noEntry(ERROR_INVALID_ACL));
    }
  }
}

TEST(FilePermissions, AnEntryTooSmallForItsPrincipalIsRefused) {
  for (const unsigned type : {0U, 1U}) {
    for (const unsigned claimed : {4U, 8U, 15U}) {
      EXPECT_EQ(verdict(listOf(aceBytes({type, 0, kFull, kUsers}, claimed), 1)), noEntry(ERROR_INVALID_ACL));
    }
    for (const unsigned claimed : {16U, 20U, 23U}) {
      EXPECT_EQ(verdict(listOf(aceBytes({type, 0, kFull, kUsers}, claimed), 1)), noEntry(ERROR_INVALID_SID));
    }
  }
}

TEST(FilePermissions, APrincipalThatClaimsTooManySubAuthoritiesIsRefused) {
  for (const char count : {'\3', '\17', '\20', '\xFF'}) {
    std::string sid = kUsers;
    sid[1] = count;
    EXPECT_EQ(verdict(descriptorWith({allow(kFull, sid)})), noEntry(ERROR_INVALID_SID));
  }
}

TEST(FilePermissions, APrincipalOfMoreThanFifteenSubAuthoritiesIsRefusedEvenWhenTheyAreThere) {
  const std::string sid = sidOf(5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  EXPECT_EQ(verdict(descriptorWith({allow(kFull, sid)})), noEntry(ERROR_INVALID_SID));
}

TEST(FilePermissions, APrincipalOfAnotherRevisionIsRefused) {
  for (const char revision : {'\0', '\2', '\xFF'}) {
    std::string sid = kUsers;
    sid[0] = revision;
    EXPECT_EQ(verdict(descriptorWith({allow(kFull, sid)})), noEntry(ERROR_INVALID_SID));
  }
}

TEST(FilePermissions, WhatStandsBeforeAMalformedEntryIsJudgedFirst) {
  const std::string bad = aceBytes(allow(kFull, kAdministrators), 0);
  EXPECT_EQ(verdict(listOf(aceBytes(allow(kRead, kUsers)) + bad, 2)), groupHasAccess("Users"));
  EXPECT_EQ(verdict(listOf(aceBytes(allow(kFull, kAdministrators)) + bad, 2)), noEntry(ERROR_INVALID_ACL));
  EXPECT_EQ(verdict(listOf(bad + aceBytes(allow(kRead, kUsers)), 2)), noEntry(ERROR_INVALID_ACL));
}

TEST(FilePermissions, ADescriptorCutAnywhereIsRefused) {
  const std::string whole = descriptorWith({deny(kFull, kUsers), allow(kFull, kAdministrators)});
  ASSERT_EQ(verdict(whole), "");
  for (std::size_t size = kHeader; size < whole.size(); ++size) {
    EXPECT_EQ(verdict(whole.substr(0, size)), noList(ERROR_INVALID_ACL)) << size;
  }
}

// Whatever a byte becomes, the answer is one of the known ones and nothing outside the block is read.
TEST(FilePermissions, NoByteOfADescriptorCanDoHarm) {
  const std::string whole = descriptorWith({deny(kFull, kUsers), {5, 0, 1, kEveryone}, allow(kRead, kUsers)});
  ASSERT_EQ(verdict(whole), "");
  for (std::size_t i = 0; i < whole.size(); ++i) {
    for (const char value : {'\0', '\1', '\4', '\x7F', '\x80', '\xFF'}) {
      std::string changed = whole;
      changed[i] = value;
      const std::string number = verdict(changed).substr(0, 9);
      EXPECT_TRUE(number.empty() || number == "KTBNV0144" || number == "KTBNV0145" || number == "KTBNV0146" ||
                  number == "KTBNV0147")
          << i << ": " << number;
    }
  }
}

}  // namespace
}  // namespace tessel::test
