// The access lists that are handed to the system for files and directories, entry by entry.
#include <gmock/gmock.h>

#include <filesystem>

#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "faults/FileSecurityHooks.h"
#include "support/Handles.h"
#include "support/Records.h"
#include "support/TempFolder.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

using testing::HasSubstr;

constexpr DWORD kOwnerOfDirectory = 0xE01F0000;
constexpr DWORD kOwnerOfFile = 0xC01F0000;
constexpr DWORD kReadDirectory = 0xA0000000;
constexpr DWORD kReadFile = 0x80000000;
constexpr DWORD kWrite = 0x401F0000;
constexpr unsigned kInherit = 3;

using Entries = std::vector<AceOf>;

class FileAccessLists : public testing::Test {
 protected:
  // What the first trace point of a process opens for good.
  static void SetUpTestSuite() {
    const TraceScope trace("NYXUtils=FLOW");
    NYXUtils::mkdirs("", false);
  }

  // The one list that the call hands to the system for the path.
  template <class Call>
  ListOf handedBy(const std::string& path, const Call& call) {
    const HandleBaseline handles;
    const HandedLists lists;
    call(path);
    EXPECT_EQ(handles.growth(), 0);
    if (lists.all().size() != 1) {
      ADD_FAILURE() << lists.all().size() << " lists were handed over";
      return {};
    }
    EXPECT_EQ(lists.all()[0].path, path);
    return lists.all()[0].list;
  }

  Entries mkpriv(const std::string& path, bool read, bool write) {
    return handedBy(path, [&](const std::string& p) { NYXUtils::mkpriv(p, read, write); }).entries;
  }

  Entries mkGroupOmniWrite(const std::string& path, bool write) {
    return handedBy(path, [&](const std::string& p) { NYXUtils::mkGroupOmniWrite(p, write); }).entries;
  }

  const TempFolder folder_;
  const std::string directory_ = folder_.path().string();
  const std::string file_ = folder_.write("file", "x").string();
  const std::string user_ = currentUser();
};

TEST_F(FileAccessLists, APrivateFileIsTheUsersAndTheAdministrators) {
  EXPECT_EQ(mkpriv(file_, false, false), (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators)}));
}

TEST_F(FileAccessLists, APrivateDirectoryHandsItsEntriesDown) {
  EXPECT_EQ(mkpriv(directory_, false, false),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit)}));
}

TEST_F(FileAccessLists, EveryoneMayReadAFile) {
  EXPECT_EQ(mkpriv(file_, true, false),
            (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators), allow(kReadFile, kEveryone)}));
}

TEST_F(FileAccessLists, EveryoneMayReadADirectory) {
  EXPECT_EQ(mkpriv(directory_, true, false),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(kReadDirectory, kEveryone, kInherit)}));
}

TEST_F(FileAccessLists, EveryoneMayWriteAFile) {
  EXPECT_EQ(mkpriv(file_, false, true),
            (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators), allow(kWrite, kEveryone)}));
}

TEST_F(FileAccessLists, EveryoneMayWriteADirectory) {
  EXPECT_EQ(mkpriv(directory_, false, true),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(kWrite, kEveryone, kInherit)}));
}

TEST_F(FileAccessLists, EveryoneMayReadAndWriteAFile) {
  EXPECT_EQ(mkpriv(file_, true, true),
            (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators), allow(0xC01F0000, kEveryone)}));
}

TEST_F(FileAccessLists, EveryoneMayReadAndWriteADirectory) {
  EXPECT_EQ(mkpriv(directory_, true, true),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(0xE01F0000, kEveryone, kInherit)}));
}

TEST_F(FileAccessLists, TheGroupComesBeforeEveryoneWhoMayAlwaysRead) {
  const OmniAccount omni(kOmni);
  EXPECT_EQ(mkGroupOmniWrite(file_, false), (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators),
                                                     allow(kOwnerOfFile, kOmni), allow(kReadFile, kEveryone)}));
  EXPECT_EQ(mkGroupOmniWrite(directory_, false),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(kOwnerOfDirectory, kOmni, kInherit), allow(kReadDirectory, kEveryone, kInherit)}));
  EXPECT_EQ(omni.calls(), 4U);
}

TEST_F(FileAccessLists, EveryoneMayWriteBesideTheGroup) {
  const OmniAccount omni(kOmni);
  EXPECT_EQ(mkGroupOmniWrite(file_, true), (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators),
                                                    allow(kOwnerOfFile, kOmni), allow(0xC01F0000, kEveryone)}));
  EXPECT_EQ(mkGroupOmniWrite(directory_, true),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(kOwnerOfDirectory, kOmni, kInherit), allow(0xE01F0000, kEveryone, kInherit)}));
}

TEST_F(FileAccessLists, AGroupThatDoesNotExistIsLeftOut) {
  const OmniAccount omni("");
  EXPECT_EQ(mkGroupOmniWrite(file_, false),
            (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators), allow(kReadFile, kEveryone)}));
  EXPECT_EQ(mkGroupOmniWrite(file_, true),
            (Entries{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators), allow(0xC01F0000, kEveryone)}));
  EXPECT_EQ(mkGroupOmniWrite(directory_, false),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(kReadDirectory, kEveryone, kInherit)}));
  EXPECT_EQ(mkGroupOmniWrite(directory_, true),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(0xE01F0000, kEveryone, kInherit)}));
  EXPECT_EQ(omni.calls(), 4U);
}

// As this machine is: it has no such account.
TEST_F(FileAccessLists, WithoutTheAccountTheRealSystemLeavesTheGroupOut) {
  EXPECT_EQ(mkGroupOmniWrite(directory_, false),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(kReadDirectory, kEveryone, kInherit)}));
}

TEST_F(FileAccessLists, AGroupWithoutAValidPrincipalIsLeftOutAndTraced) {
  const OmniAccount omni('\7' + kOmni.substr(1));
  const RecordingHandler log("NYXUtils");
  const Entries expected{allow(kOwnerOfFile, user_), allow(kOwnerOfFile, kAdministrators), allow(kReadFile, kEveryone)};
  EXPECT_EQ(mkGroupOmniWrite(file_, false), expected);
  EXPECT_TRUE(log.records().empty());
  const TraceScope trace("NYXUtils=FLOW");
  EXPECT_EQ(mkGroupOmniWrite(file_, false), expected);
  const auto points = recordsOf(log, LogRecordType::DATA, "setWindowsACLs");
  ASSERT_EQ(points.size(), 1U);
  EXPECT_THAT(points[0].message, HasSubstr("Unexpectedly unable to retrieve valid SID for omni user/group."));
}

TEST_F(FileAccessLists, TheGroupIsAskedForOnlyWhenItIsWanted) {
  const OmniAccount omni(kOmni);
  EXPECT_EQ(mkpriv(file_, true, true).size(), 3U);
  EXPECT_EQ(omni.calls(), 0U);
}

TEST_F(FileAccessLists, TheListIsAsLongAsItsEntriesAndOfRevisionTwo) {
  const OmniAccount omni(kOmni);
  const auto users = static_cast<unsigned>(user_.size());
  const ListOf two = handedBy(file_, [](const std::string& p) { NYXUtils::mkpriv(p, false, false); });
  EXPECT_EQ(two.revision, 2U);
  EXPECT_EQ(two.size, 24 + users + 16);
  const ListOf four = handedBy(file_, [](const std::string& p) { NYXUtils::mkGroupOmniWrite(p, false); });
  EXPECT_EQ(four.size, 24 + users + 16 + (8 + 28) + (8 + 12));
}

TEST_F(FileAccessLists, WhatCannotBeLookedAtCountsAsADirectory) {
  ImportHook<"GetFileAttributesA", decltype(GetFileAttributesA)> attributes;
  attributes.failAlways(ERROR_ACCESS_DENIED, INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(mkpriv(file_, false, false),
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit)}));
}

TEST_F(FileAccessLists, TheUserIsTheProcessesEvenWhenTheThreadImpersonates) {
  ImportHook<"OpenThreadToken", decltype(OpenThreadToken)> thread;
  EXPECT_EQ(mkpriv(file_, false, false).size(), 2U);
  EXPECT_EQ(thread.calls(), 0U);
}

TEST_F(FileAccessLists, TheLongestPrincipalsFit) {
  const std::string longest = sidOf(5, {21, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14});
  const OmniAccount omni(longest);
  const Entries entries = mkGroupOmniWrite(file_, false);
  ASSERT_EQ(entries.size(), 4U);
  EXPECT_EQ(entries[2], allow(kOwnerOfFile, longest));
}

TEST_F(FileAccessLists, EachNewDirectoryIsSecuredFromTheTopDown) {
  const HandedLists lists(true);
  const std::string first = directory_ + "\\one";
  const std::string last = first + "\\two\\three";
  EXPECT_EQ(NYXUtils::mkdirs(last, false), 0);
  ASSERT_EQ(lists.all().size(), 3U);
  EXPECT_EQ(lists.all()[0].path, first);
  EXPECT_EQ(lists.all()[1].path, first + "\\two");
  EXPECT_EQ(lists.all()[2].path, last);
  for (const auto& handed : lists.all()) {
    EXPECT_EQ(handed.list.entries, (Entries{allow(kOwnerOfDirectory, user_, kInherit),
                                            allow(kOwnerOfDirectory, kAdministrators, kInherit)}));
  }
}

TEST_F(FileAccessLists, ADirectoryForEveryoneMayBeReadAndWritten) {
  const HandedLists lists;
  EXPECT_EQ(NYXUtils::mkdirs(directory_ + "\\shared", true), 0);
  ASSERT_EQ(lists.all().size(), 1U);
  EXPECT_EQ(lists.all()[0].list.entries,
            (Entries{allow(kOwnerOfDirectory, user_, kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit),
                     allow(0xE01F0000, kEveryone, kInherit)}));
}

TEST_F(FileAccessLists, DirectoriesThatExistKeepTheirLists) {
  const HandedLists lists;
  EXPECT_EQ(NYXUtils::mkdirs(directory_, true), 0);
  EXPECT_EQ(NYXUtils::mkdirs("", true), 0);
  EXPECT_EQ(NYXUtils::mkdirs(file_, true), -1);
  EXPECT_TRUE(lists.all().empty());
}

}  // namespace
}  // namespace tessel::test
