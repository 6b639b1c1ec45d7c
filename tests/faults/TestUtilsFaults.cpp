#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXUtils.h>

#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/RareError.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using OpenTokenHook = ImportHook<"OpenProcessToken", decltype(OpenProcessToken)>;
using TokenHook = ImportHook<"GetTokenInformation", decltype(GetTokenInformation)>;
// Spelled out: the type va_list carries an attribute, which a template argument cannot have.
using FormatHook = ImportHook<"FormatMessageA", DWORD(DWORD, LPCVOID, DWORD, DWORD, LPSTR, DWORD, char**)>;
using AccountHook = ImportHook<"LookupAccountSidA", decltype(LookupAccountSidA)>;

std::string groupFailure() {
  return thrownBy<NYXIOException>([] { NYXUtils::isCurrentUserMemberOfGroup("no such group"); });
}

void expectGroupsWork() { EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("no such group")); }

class GroupFaults : public testing::Test {
 protected:
  // What the system opens for good in the first look-ups and the first failures of a process.
  static void SetUpTestSuite() {
    for (int i = 0; i < 2; ++i) {
      expectGroupsWork();
      OpenTokenHook hook;
      hook.failOnce(kRareError);
      groupFailure();
      expectGroupsWork();
    }
  }
  ~GroupFaults() override {
    EXPECT_EQ(handles.growth(), 0);
    expectGroupsWork();
    EXPECT_EQ(handles.growth(), 0);
  }

  const HandleBaseline handles;
};

// Copies what a look-up answers.
void answer(const char* text, LPSTR buffer, LPDWORD length) {
  std::strcpy(buffer, text);  // NOLINT(clang-analyzer-security.insecureAPI.strcpy): the buffers are known to be large
  *length = static_cast<DWORD>(std::strlen(text));
}

TEST_F(GroupFaults, ATokenThatCannotBeOpenedIsReported) {
  OpenTokenHook hook;
  hook.failAlways(kRareError);
  EXPECT_EQ(groupFailure(), messageText("KTBNV0129_OPENPROCESSTOKEN_FAILED", kRareText));
  EXPECT_EQ(groupFailure(), messageText("KTBNV0129_OPENPROCESSTOKEN_FAILED", kRareText));
  EXPECT_EQ(hook.calls(), 2U);
}

TEST_F(GroupFaults, TheSystemsTextIsTheInsert) {
  OpenTokenHook hook;
  hook.failOnce(ERROR_ACCESS_DENIED);
  EXPECT_EQ(groupFailure(),
            messageText("KTBNV0129_OPENPROCESSTOKEN_FAILED", NYXUtils::getLastErrorMessage(ERROR_ACCESS_DENIED)));
}

TEST_F(GroupFaults, ASizeThatCannotBeAskedForIsReported) {
  TokenHook hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(groupFailure(), messageText("KTBNV0130_OPENPROCESSTOKEN_FAILED", kRareText));
  EXPECT_EQ(hook.calls(), 1U);
}

TEST_F(GroupFaults, GroupsThatCannotBeReadAreReported) {
  TokenHook hook;
  hook.replaceWith([&](HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size, PDWORD needed) {
    if (!buffer) return hook.callOriginal(token, kind, buffer, size, needed);
    SetLastError(kRareError);
    return FALSE;
  });
  EXPECT_EQ(groupFailure(), messageText("KTBNV0131_GETTOKENINFORMATION_FAILED", kRareText));
  EXPECT_EQ(hook.calls(), 2U);
}

TEST_F(GroupFaults, ATokenWithoutGroupsMatchesNothing) {
  TokenHook hook;
  AccountHook accounts;
  hook.replaceWith([&](HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size, PDWORD needed) {
    const BOOL done = hook.callOriginal(token, kind, buffer, size, needed);
    if (done) static_cast<TOKEN_GROUPS*>(buffer)->GroupCount = 0;
    return done;
  });
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("Administrators"));
  EXPECT_EQ(accounts.calls(), 0U);
}

TEST_F(GroupFaults, AGroupThatCannotBeLookedUpIsReported) {
  AccountHook hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(groupFailure(), messageText("KTBNV0132_LOOKUPACCOUNTSID_FAILED", kRareText));
  EXPECT_EQ(hook.calls(), 1U);
}

TEST_F(GroupFaults, ALaterGroupThatCannotBeLookedUpIsReportedToo) {
  AccountHook hook;
  hook.replaceWith([&](LPCSTR system, PSID sid, LPSTR name, LPDWORD nameLength, LPSTR domain, LPDWORD domainLength,
                       PSID_NAME_USE use) {
    if (hook.calls() < 3) return hook.callOriginal(system, sid, name, nameLength, domain, domainLength, use);
    SetLastError(kRareError);
    return FALSE;
  });
  EXPECT_EQ(groupFailure(), messageText("KTBNV0132_LOOKUPACCOUNTSID_FAILED", kRareText));
  EXPECT_EQ(hook.calls(), 3U);
}

TEST_F(GroupFaults, AGroupWithoutANameIsPassedOver) {
  AccountHook hook;
  hook.failAlways(ERROR_NONE_MAPPED);
  expectGroupsWork();
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup(""));
  EXPECT_GT(hook.calls(), 2U);
}

TEST_F(GroupFaults, AGroupIsMatchedInAnyDomain) {
  AccountHook hook;
  hook.replaceWith([](LPCSTR, PSID, LPSTR name, LPDWORD nameLength, LPSTR domain, LPDWORD domainLength, PSID_NAME_USE) {
    answer("omni", name, nameLength);
    answer("ELSEWHERE", domain, domainLength);
    return TRUE;
  });
  EXPECT_TRUE(NYXUtils::isCurrentUserMemberOfGroup("omni"));
  EXPECT_EQ(hook.calls(), 1U);  // the first match ends the search
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("Omni"));
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("ELSEWHERE"));
}

TEST_F(GroupFaults, AGroupWhoseNameIsEmptyMatchesNothing) {
  AccountHook hook;
  hook.replaceWith([](LPCSTR, PSID, LPSTR name, LPDWORD nameLength, LPSTR domain, LPDWORD domainLength, PSID_NAME_USE) {
    answer("", name, nameLength);
    answer("", domain, domainLength);
    return TRUE;
  });
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup(""));
}

TEST_F(GroupFaults, EachLookUpIsGivenTheWholeBuffers) {
  AccountHook hook;
  hook.replaceWith([&](LPCSTR system, PSID sid, LPSTR name, LPDWORD nameLength, LPSTR domain, LPDWORD domainLength,
                       PSID_NAME_USE use) {
    EXPECT_EQ(system, nullptr);
    EXPECT_EQ(*nameLength, 256U);
    EXPECT_EQ(*domainLength, 271U);
    return hook.callOriginal(system, sid, name, nameLength, domain, domainLength, use);
  });
  expectGroupsWork();
  EXPECT_GT(hook.calls(), 1U);
}

TEST_F(GroupFaults, ADenyOnlyGroupCounts) {
  TokenHook hook;
  hook.replaceWith([&](HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size, PDWORD needed) {
    const BOOL done = hook.callOriginal(token, kind, buffer, size, needed);
    if (done) {
      auto* groups = static_cast<TOKEN_GROUPS*>(buffer);
      for (DWORD i = 0; i < groups->GroupCount; ++i) groups->Groups[i].Attributes = SE_GROUP_USE_FOR_DENY_ONLY;
    }
    return done;
  });
  AccountHook accounts;
  accounts.replaceWith(
      [](LPCSTR, PSID, LPSTR name, LPDWORD nameLength, LPSTR domain, LPDWORD domainLength, PSID_NAME_USE) {
        answer("Administrators", name, nameLength);
        answer("BUILTIN", domain, domainLength);
        return TRUE;
      });
  EXPECT_TRUE(NYXUtils::isCurrentUserMemberOfGroup("Administrators"));
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("administrators"));
}

TEST(UtilsFaults, AVariableThatCannotBeSetIsReported) {
  ImportHook<"SetEnvironmentVariableA", decltype(SetEnvironmentVariableA)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([] { NYXUtils::setenv("TESSEL_TEST", "1"); }),
            messageText("KTBNV0110_SETENV_FAILED", "TESSEL_TEST", kRareText));
  NYXUtils::setenv("TESSEL_TEST", "2");
  EXPECT_EQ(NYXUtils::getenv("TESSEL_TEST"), "2");
  EXPECT_EQ(hook.calls(), 2U);
}

TEST(UtilsFaults, APathThatCannotBeSetIsReported) {
  ImportHook<"SetEnvironmentVariableA", decltype(SetEnvironmentVariableA)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([] { NYXUtils::addBinDirToPath("C:\\bin"); }),
            messageText("KTBNV0110_SETENV_FAILED", "PATH", kRareText));
}

TEST(UtilsFaults, ACurrentDirectoryThatCannotBeReadIsEmpty) {
  ImportHook<"GetCurrentDirectoryA", decltype(GetCurrentDirectoryA)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(NYXUtils::getCwd(), "");
  hook.failOnce(0, 300);  // as the system tells that the buffer is too small
  EXPECT_EQ(NYXUtils::getCwd(), "");
  EXPECT_NE(NYXUtils::getCwd(), "");
}

TEST(UtilsFaults, TheCurrentDirectoryIsReadInto261Characters) {
  ImportHook<"GetCurrentDirectoryA", decltype(GetCurrentDirectoryA)> hook;
  hook.replaceWith([](DWORD size, LPSTR buffer) -> DWORD {
    EXPECT_EQ(size, 261U);
    std::strcpy(buffer, "C:\\here");  // NOLINT(clang-analyzer-security.insecureAPI.strcpy)
    return 7;
  });
  EXPECT_EQ(NYXUtils::getCwd(), "C:\\here");
}

TEST(UtilsFaults, AnErrorWhoseTextCannotBeReadIsItsNumber) {
  FormatHook hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(NYXUtils::getLastErrorMessage(5), "5");
  EXPECT_NE(NYXUtils::getLastErrorMessage(5), "5");
  EXPECT_EQ(hook.calls(), 2U);
}

// The system answers in the code page, the log files are UTF-8.
TEST(UtilsFaults, ASystemTextBeyondAsciiStandsInMessagesWithEscapes) {
  ASSERT_EQ(GetACP(), 1252U);
  FormatHook hook;
  hook.replaceWith([](DWORD, LPCVOID, DWORD, DWORD, LPSTR buffer, DWORD, char**) -> DWORD {
    std::strcpy(buffer, "r\xE9sum\xE9 \x80\r\n");  // NOLINT(clang-analyzer-security.insecureAPI.strcpy)
    return 10;
  });
  EXPECT_EQ(NYXUtils::getLastErrorMessage(5), "r\xE9sum\xE9 \x80");
  ImportHook<"SetEnvironmentVariableA", decltype(SetEnvironmentVariableA)> refused;
  refused.failOnce(5);
  EXPECT_EQ(thrownBy<NYXException>([] { NYXUtils::setenv("TESSEL_TEST", "x"); }),
            messageText("KTBNV0110_SETENV_FAILED", "TESSEL_TEST", "r\\u00e9sum\\u00e9 \\u20ac"));
}

TEST(UtilsFaults, TheTextOfAnErrorIsReadWithoutInsertsInto4096Characters) {
  FormatHook hook;
  hook.replaceWith([](DWORD flags, LPCVOID source, DWORD number, DWORD, LPSTR buffer, DWORD size, char**) -> DWORD {
    EXPECT_EQ(flags, 0x1200U);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(number, 5U);
    EXPECT_EQ(size, 4096U);
    std::strcpy(buffer, "no way in\r\n");  // NOLINT(clang-analyzer-security.insecureAPI.strcpy)
    return 11;
  });
  EXPECT_EQ(NYXUtils::getLastErrorMessage(5), "no way in");
}

}  // namespace
}  // namespace tessel::test
