// File security when the system refuses one of its calls.
#include <gtest/gtest.h>

#include <filesystem>
#include <new>

#include <tessel/FilePermissionsException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXUtils.h>

#include "faults/CraftedDescriptor.h"
#include "faults/FileSecurityHooks.h"
#include "support/Handles.h"
#include "support/PipePeers.h"
#include "support/RecordingHandler.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

// An error number that no call of these tests gives by itself.
constexpr DWORD kRare = 7777;

using SidHook = ImportHook<"AllocateAndInitializeSid", decltype(AllocateAndInitializeSid)>;
using EntryHook = ImportHook<"AddAccessAllowedAceEx", decltype(AddAccessAllowedAceEx)>;
using CreateHook = ImportHook<"CreateDirectoryA", decltype(CreateDirectoryA)>;

// Lets only the call of that number fail, counted from 1.
void failAt(SidHook& hook, unsigned number) {
  hook.replaceWith([&hook, number](SID_IDENTIFIER_AUTHORITY* authority, BYTE count, DWORD a, DWORD b, DWORD c, DWORD d,
                                   DWORD e, DWORD f, DWORD g, DWORD h, PSID* sid) -> BOOL {
    if (hook.calls() != number) return hook.callOriginal(authority, count, a, b, c, d, e, f, g, h, sid);
    SetLastError(kRare);
    return FALSE;
  });
}

void failAt(EntryHook& hook, unsigned number) {
  hook.replaceWith([&hook, number](ACL* list, DWORD revision, DWORD flags, DWORD mask, PSID sid) -> BOOL {
    if (hook.calls() != number) return hook.callOriginal(list, revision, flags, mask, sid);
    SetLastError(kRare);
    return FALSE;
  });
}

class FileSecurityFaults : public testing::Test {
 protected:
  // What the system opens for good at the first look at a token and the first failure.
  static void SetUpTestSuite() {
    const TempFolder folder;
    const OmniAccount omni("");
    NYXUtils::mkGroupOmniWrite(folder.path().string(), false);
    thrownBy<NYXIOException>([&] { NYXUtils::mkpriv(folder.path().string() + "\\none", false, false); });
  }

  // The call's message is that of the key; it gave back what it took; the next call works.
  void expectFailure(const std::string& key, unsigned principals, bool omni = true) {
    const HandleBaseline handles;
    const unsigned freed = freeSid_.calls();
    const std::string message = thrownBy<NYXIOException>(
        [&] { omni ? NYXUtils::mkGroupOmniWrite(file_, true) : NYXUtils::mkpriv(file_, false, false); });
    EXPECT_EQ(message, messageText(key, systemText(kRare), key.find("0172") == 5 ? "omni" : file_));
    EXPECT_EQ(handles.growth(), 0);
    EXPECT_EQ(freeSid_.calls() - freed, principals);
  }

  void TearDown() override {
    NYXUtils::mkGroupOmniWrite(file_, true);
    EXPECT_EQ(handles_.growth(), 0);
  }

  const TempFolder folder_;
  const std::string file_ = folder_.write("file", "x").string();
  const HandleBaseline handles_;
  OmniAccount omni_{kOmni};
  ImportHook<"FreeSid", decltype(FreeSid)> freeSid_;
};

TEST_F(FileSecurityFaults, ATokenThatCannotBeOpenedIsReported) {
  ImportHook<"OpenProcessToken", decltype(OpenProcessToken)> hook;
  hook.failOnce(kRare);
  expectFailure("KTBNV0021_OPENPROCESSTOKEN_ERROR", 0);
}

TEST_F(FileSecurityFaults, AUserThatCannotBeReadIsReported) {
  ImportHook<"GetTokenInformation", decltype(GetTokenInformation)> hook;
  hook.replaceWith([&](HANDLE token, TOKEN_INFORMATION_CLASS kind, void* buffer, DWORD size, DWORD* needed) -> BOOL {
    EXPECT_EQ(kind, TokenUser);
    if (!buffer) return hook.callOriginal(token, kind, buffer, size, needed);
    SetLastError(kRare);
    return FALSE;
  });
  expectFailure("KTBNV0022_GETTOKENINFORMATION_ERROR", 0);
  hook.passOn();
}

TEST_F(FileSecurityFaults, AUserWhoseSizeIsNotToldIsReported) {
  ImportHook<"GetTokenInformation", decltype(GetTokenInformation)> hook;
  hook.failAlways(kRare);
  expectFailure("KTBNV0022_GETTOKENINFORMATION_ERROR", 0);
  hook.passOn();
}

// Whatever the question for the size answers: the reading decides.
TEST_F(FileSecurityFaults, AUserWhoseSizeComesWithAnErrorIsReadAllTheSame) {
  ImportHook<"GetTokenInformation", decltype(GetTokenInformation)> hook;
  hook.replaceWith([&](HANDLE token, TOKEN_INFORMATION_CLASS kind, void* buffer, DWORD size, DWORD* needed) -> BOOL {
    const BOOL done = hook.callOriginal(token, kind, buffer, size, needed);
    if (!buffer) SetLastError(kRare);
    return done;
  });
  NYXUtils::mkpriv(file_, false, false);
  EXPECT_EQ(hook.calls(), 2U);
}

TEST_F(FileSecurityFaults, AdministratorsThatCannotBeBuiltAreReported) {
  SidHook hook;
  failAt(hook, 1);
  expectFailure("KTBNV0023_ALLOCATEANDINITIALIZESID_ERROR", 0);
}

TEST_F(FileSecurityFaults, AGroupThatCannotBeLookedUpIsReportedByItsName) {
  omni_.failWithRoom(kRare);
  expectFailure("KTBNV0172_LOOKUPACCOUNTNAME_ERROR", 1);
  omni_.failWithRoom(0);
}

TEST_F(FileSecurityFaults, EveryoneThatCannotBeBuiltIsReported) {
  SidHook hook;
  failAt(hook, 2);
  expectFailure("KTBNV0024_ALLOCATEANDINITIALIZESID_ERROR", 1);
}

TEST_F(FileSecurityFaults, AListThatCannotBePreparedIsReported) {
  ImportHook<"InitializeAcl", decltype(InitializeAcl)> hook;
  hook.failOnce(kRare);
  expectFailure("KTBNV0025_INITIALIZEACL_ERROR", 2);
}

TEST_F(FileSecurityFaults, EachEntryThatCannotBeAddedIsReported) {
  const char* const keys[] = {"KTBNV0026_ADDACCESSALLOWEDACE_ERROR", "KTBNV0027_ADDACCESSALLOWEDACE_ERROR",
                              "KTBNV0027_ADDACCESSALLOWEDACE_ERROR", "KTBNV0028_ADDACCESSALLOWEDACE_ERROR"};
  for (unsigned entry = 0; entry < 4; ++entry) {
    EntryHook hook;
    failAt(hook, entry + 1);
    expectFailure(keys[entry], 2);
    EXPECT_EQ(hook.calls(), entry + 1);
  }
}

TEST_F(FileSecurityFaults, ADescriptorThatCannotBePreparedIsReported) {
  ImportHook<"InitializeSecurityDescriptor", decltype(InitializeSecurityDescriptor)> hook;
  hook.failOnce(kRare);
  expectFailure("KTBNV0029_INITIALIZESECURITYDESCRIPTOR_ERROR", 2);
}

TEST_F(FileSecurityFaults, ADescriptorThatTakesNoListIsReported) {
  ImportHook<"SetSecurityDescriptorDacl", decltype(SetSecurityDescriptorDacl)> hook;
  hook.failOnce(kRare);
  expectFailure("KTBNV0030_SETSECURITYDESCRIPTORDACL_ERROR", 2);
}

TEST_F(FileSecurityFaults, AListThatTheSystemDoesNotTakeIsReported) {
  ImportHook<"SetFileSecurityA", decltype(SetFileSecurityA)> hook;
  hook.failOnce(kRare);
  expectFailure("KTBNV0031_SETFILESECURITY_ERROR", 2);
  hook.failOnce(kRare);
  expectFailure("KTBNV0031_SETFILESECURITY_ERROR", 1, false);
}

TEST_F(FileSecurityFaults, SuccessGivesEveryPrincipalBack) {
  const HandleBaseline handles;
  NYXUtils::mkpriv(file_, false, false);
  EXPECT_EQ(freeSid_.calls(), 1U);
  NYXUtils::mkpriv(file_, true, true);
  EXPECT_EQ(freeSid_.calls(), 3U);
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(FileSecurityFaults, ADirectoryThatCannotBeSecuredStaysAndIsReported) {
  ImportHook<"SetFileSecurityA", decltype(SetFileSecurityA)> hook;
  hook.failOnce(kRare);
  const std::string first = folder_.path().string() + "\\one";
  EXPECT_EQ(thrownBy<NYXIOException>([&] { NYXUtils::mkdirs(first + "\\two", false); }),
            messageText("KTBNV0031_SETFILESECURITY_ERROR", systemText(kRare), first));
  EXPECT_TRUE(std::filesystem::is_directory(first));
  EXPECT_FALSE(std::filesystem::exists(first + "\\two"));
}

TEST_F(FileSecurityFaults, ADirectoryThatIsRefusedIsAFailureWithoutAnException) {
  CreateHook hook;
  hook.failAlways(ERROR_ACCESS_DENIED);
  EXPECT_EQ(NYXUtils::mkdirs("a\\b", false), -1);
  EXPECT_EQ(hook.calls(), 1U);
}

TEST_F(FileSecurityFaults, ParentsThatWereMadeBeforeAFailureStay) {
  const std::string first = folder_.path().string() + "\\one";
  CreateHook hook;
  hook.replaceWith([&](LPCSTR path, SECURITY_ATTRIBUTES* attributes) -> BOOL {
    if (path == first || !std::filesystem::exists(first)) return hook.callOriginal(path, attributes);
    SetLastError(ERROR_INVALID_NAME);
    return FALSE;
  });
  EXPECT_EQ(NYXUtils::mkdirs(first + "\\two", false), -1);
  EXPECT_EQ(hook.calls(), 3U);
  EXPECT_TRUE(std::filesystem::is_directory(first));
  hook.passOn();
}

// As a handler that writes a file does.
class ChangesTheLastError : public RecordingHandler {
 public:
  using RecordingHandler::RecordingHandler;
  void publish(LogRecord& record) override {
    RecordingHandler::publish(record);
    SetLastError(NO_ERROR);
  }
};

TEST_F(FileSecurityFaults, TheReasonOfADirectoryThatCannotBeMadeSurvivesItsTrace) {
  ChangesTheLastError handler("NYXUtils");
  const TraceScope trace("NYXUtils");
  CreateHook hook;
  hook.replaceWith([](LPCSTR path, SECURITY_ATTRIBUTES*) -> BOOL {
    SetLastError(path == std::string("a") ? kRare : ERROR_PATH_NOT_FOUND);
    return FALSE;
  });
  EXPECT_EQ(NYXUtils::mkdirs("a", false), -1);
  EXPECT_EQ(GetLastError(), kRare);
  EXPECT_EQ(NYXUtils::mkdirs("a\\b", false), -1);
  EXPECT_EQ(GetLastError(), kRare);
  EXPECT_FALSE(handler.records().empty());
}

// "a\b" once, "a" twice: its parent, the empty path, is there.
TEST_F(FileSecurityFaults, APathThatIsNeverFoundIsGivenUp) {
  CreateHook hook;
  hook.failAlways(ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(NYXUtils::mkdirs("a\\b", false), -1);
  EXPECT_EQ(hook.calls(), 3U);
}

TEST_F(FileSecurityFaults, APathThatIsFoundAtTheSecondTryIsMade) {
  CreateHook hook;
  hook.failOnce(ERROR_PATH_NOT_FOUND);
  const std::string path = folder_.path().string() + "\\new";
  EXPECT_EQ(NYXUtils::mkdirs(path, false), 0);
  EXPECT_EQ(hook.calls(), 3U);  // the path, its parent, which exists, and the path
  EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST_F(FileSecurityFaults, AnExistingPathThatCannotBeLookedAtCountsAsADirectory) {
  ImportHook<"GetFileAttributesA", decltype(GetFileAttributesA)> hook;
  hook.failAlways(ERROR_ACCESS_DENIED, INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(NYXUtils::mkdirs(file_, false), 0);
}

class PermissionFaults : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (int i = 0; i < 2; ++i) {
      thrownBy<FilePermissionsException>([] { NYXUtils::checkFilePermissions("C:\\no such folder\\none"); });
    }
  }

  template <class... Inserts>
  void expectFailure(const std::string& key, const Inserts&... inserts) {
    EXPECT_EQ(thrownBy<FilePermissionsException>([&] { NYXUtils::checkFilePermissions(path_); }),
              messageText(key, inserts...));
  }

  void TearDown() override {
    NYXUtils::checkFilePermissions(path_);
    EXPECT_EQ(handles_.growth(), 0);
    EXPECT_EQ(freeSid_.calls(), builtSids_ + 3);
  }

  const HandleBaseline handles_;
  const std::string path_ = "C:\\a file";
  const CraftedDescriptor file_{descriptorWith({allow(FILE_ALL_ACCESS, kAdministrators)})};
  ImportHook<"FreeSid", decltype(FreeSid)> freeSid_;
  unsigned builtSids_ = 0;
};

TEST_F(PermissionFaults, EachPrincipalThatCannotBeBuiltIsReported) {
  const char* const keys[] = {"KTBNV0141_ALLOCATEANDINITIALIZESID_ERROR", "KTBNV0142_ALLOCATEANDINITIALIZESID_ERROR",
                              "KTBNV0143_ALLOCATEANDINITIALIZESID_ERROR"};
  for (unsigned sid = 0; sid < 3; ++sid) {
    SidHook hook;
    failAt(hook, sid + 1);
    expectFailure(keys[sid], systemText(kRare), path_);
    builtSids_ += sid;
  }
  EXPECT_EQ(file_.blocks(), 3U);
}

TEST_F(PermissionFaults, AListThatCannotBeFoundIsReported) {
  ImportHook<"GetSecurityDescriptorDacl", decltype(GetSecurityDescriptorDacl)> hook;
  hook.failOnce(kRare);
  expectFailure("KTBNV0144_GETSECURITYDESCRIPTORDACL_ERROR", systemText(kRare), path_);
  builtSids_ = 3;
}

TEST_F(PermissionFaults, AnEntryThatCannotBeReadIsReported) {
  ImportHook<"GetAce", decltype(GetAce)> hook;
  hook.failOnce(kRare);
  expectFailure("KTBNV0147_GETACE_ERROR", systemText(kRare), path_);
  builtSids_ = 3;
}

TEST_F(PermissionFaults, AnOpenFileGivesEverythingBack) {
  ImportHook<"GetSecurityDescriptorDacl", decltype(GetSecurityDescriptorDacl)> hook;
  hook.replaceWith([](PSECURITY_DESCRIPTOR, BOOL* present, ACL**, BOOL*) -> BOOL {
    *present = FALSE;
    return TRUE;
  });
  expectFailure("KTBNV0146_ALL_USERS_HAVE_ACCESS", path_);
  builtSids_ = 3;
  hook.passOn();
}

class DescriptorFaults : public testing::Test {
 protected:
  template <class... Inserts>
  void expectFailure(const std::string& key, const Inserts&... inserts) {
    EXPECT_EQ(thrownBy<FilePermissionsException>([&] { NYXUtils::checkFilePermissions(path_); }),
              messageText(key, inserts...));
  }

  const std::string path_ = "C:\\a file";
  ImportHook<"GetFileSecurityA", decltype(GetFileSecurityA)> read_;
};

TEST_F(DescriptorFaults, ASizeThatCannotBeAskedForIsReported) {
  read_.failOnce(kRare);
  expectFailure("KTBNV0139_GETFILESECURITY_ERROR", systemText(kRare), path_);
  EXPECT_EQ(read_.calls(), 1U);
}

TEST_F(DescriptorFaults, ADescriptorThatNeedsNoRoomIsReported) {
  read_.replaceWith([](LPCSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR block, DWORD size, LPDWORD) -> BOOL {
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(size, 0U);
    return TRUE;
  });
  expectFailure("KTBNV0140_GETFILESECURITY_ERROR", path_);
  EXPECT_EQ(read_.calls(), 1U);
}

// As when the list grows between the two questions.
TEST_F(DescriptorFaults, ADescriptorThatCannotBeReadIsReported) {
  read_.replaceWith([](LPCSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR block, DWORD, LPDWORD needed) -> BOOL {
    *needed = 100;
    SetLastError(block ? kRare : ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  });
  expectFailure("KTBNV0138_GETFILESECURITY_ERROR", systemText(kRare), path_);
  EXPECT_EQ(read_.calls(), 2U);
}

TEST_F(DescriptorFaults, ADescriptorWithoutMemoryIsNoVerdict) {
  read_.replaceWith([](LPCSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR, DWORD, LPDWORD needed) -> BOOL {
    *needed = 12345;
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  });
  ImportHook<"calloc", void*(std::size_t, std::size_t)> memory;
  memory.replaceWith([&](std::size_t count, std::size_t size) {
    return count * size == 12345 ? nullptr : memory.callOriginal(count, size);
  });
  EXPECT_THROW(NYXUtils::checkFilePermissions(path_), std::bad_alloc);
}

// The block is as long as announced, whatever the second answer is; the rest of it is zero.
TEST_F(DescriptorFaults, ADescriptorThatShrinksIsReadWithoutItsRest) {
  const std::string whole = descriptorOf(1, SE_DACL_PRESENT | SE_SELF_RELATIVE, 60, std::string(60, '\0'));
  read_.replaceWith([&](LPCSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR block, DWORD, LPDWORD needed) -> BOOL {
    *needed = static_cast<DWORD>(whole.size());
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    if (block) std::memcpy(block, whole.data(), sizeof(SECURITY_DESCRIPTOR_RELATIVE));
    return block != nullptr;
  });
  expectFailure("KTBNV0147_GETACE_ERROR", systemText(ERROR_INVALID_ACL), path_);
}

}  // namespace
}  // namespace tessel::test
