// The access list of a server's pipe when one of its parts cannot be made, and what it is made of.
#include <gtest/gtest.h>

#include <vector>

#include "faults/PipeFaults.h"
#include "support/EchoListener.h"
#include "support/Handles.h"

namespace tessel::test {
namespace {

class PipeSecurity : public testing::Test {
 protected:
  // What connect throws. No pipe is made, and nothing stays open but what always does.
  void expectSetupFailure(DWORD error = kRare) {
    const HandleBaseline handles;
    EXPECT_EQ(thrownBy<NYXException>([&] { server_->connect(); }),
              messageText("KTBNV0114_SECURITY_SETUP_FAILED", name_, systemText(error)));
    EXPECT_EQ(handles.growth(), kHandlesOfAServerStart);
    EXPECT_EQ(createNamedPipe_.calls(), 0U);
    EXPECT_EQ(freeSid_.calls(), freedSids_);
  }

  void TearDown() override {
    server_->connect();
    expectServes(name_);
    server_->disconnect();
  }

  EchoListener listener_;
  const std::string name_ = uniqueService();
  const std::unique_ptr<IPCServer> server_{IPCServer::newInstance(name_, listener_, -1)};
  ImportHook<"CreateNamedPipeA", decltype(CreateNamedPipeA)> createNamedPipe_;
  ImportHook<"FreeSid", decltype(FreeSid)> freeSid_;
  unsigned freedSids_ = 1;
};

TEST_F(PipeSecurity, FailsWithoutTheAdministrators) {
  freedSids_ = 0;
  ImportHook<"AllocateAndInitializeSid", decltype(AllocateAndInitializeSid)> hook;
  hook.failOnce(kRare);
  expectSetupFailure();
}

TEST_F(PipeSecurity, FailsWhenTheThreadsTokenCannotBeOpened) {
  ImportHook<"OpenThreadToken", decltype(OpenThreadToken)> hook;
  ImportHook<"OpenProcessToken", decltype(OpenProcessToken)> processToken;
  hook.failOnce(kRare);
  expectSetupFailure();
  EXPECT_EQ(processToken.calls(), 0U);
}

TEST_F(PipeSecurity, FailsWhenTheProcessesTokenCannotBeOpened) {
  ImportHook<"OpenProcessToken", decltype(OpenProcessToken)> hook;
  hook.failOnce(kRare);
  expectSetupFailure();
}

TEST_F(PipeSecurity, FailsWhenTheSizeOfTheUserIsNotTold) {
  ImportHook<"GetTokenInformation", decltype(GetTokenInformation)> hook;
  hook.failOnce(kRare);
  expectSetupFailure();
}

TEST_F(PipeSecurity, FailsWhenTheUserCannotBeRead) {
  ImportHook<"GetTokenInformation", decltype(GetTokenInformation)> hook;
  hook.replaceWith([&](HANDLE token, TOKEN_INFORMATION_CLASS kind, void* buffer, DWORD length, DWORD* needed) {
    if (!buffer) return hook.callOriginal(token, kind, buffer, length, needed);
    SetLastError(kRare);
    return FALSE;
  });
  expectSetupFailure();
}

TEST_F(PipeSecurity, FailsWithoutAnAccessList) {
  ImportHook<"InitializeAcl", decltype(InitializeAcl)> hook;
  hook.failOnce(kRare);
  expectSetupFailure();
}

TEST_F(PipeSecurity, FailsWithoutTheEntryOfTheAdministrators) {
  ImportHook<"AddAccessAllowedAce", decltype(AddAccessAllowedAce)> hook;
  hook.failOnce(kRare);
  expectSetupFailure();
  EXPECT_EQ(hook.calls(), 1U);
}

TEST_F(PipeSecurity, FailsWithoutTheEntryOfTheUser) {
  ImportHook<"AddAccessAllowedAce", decltype(AddAccessAllowedAce)> hook;
  hook.replaceWith([&](ACL* list, DWORD revision, DWORD mask, PSID sid) {
    if (hook.calls() == 1) return hook.callOriginal(list, revision, mask, sid);
    SetLastError(kRare);
    return FALSE;
  });
  expectSetupFailure();
  EXPECT_EQ(hook.calls(), 2U);
}

TEST_F(PipeSecurity, FailsWithoutADescriptor) {
  ImportHook<"InitializeSecurityDescriptor", decltype(InitializeSecurityDescriptor)> hook;
  hook.failOnce(kRare);
  expectSetupFailure();
}

TEST_F(PipeSecurity, FailsWhenTheDescriptorTakesNoList) {
  ImportHook<"SetSecurityDescriptorDacl", decltype(SetSecurityDescriptorDacl)> hook;
  hook.failOnce(kRare);
  expectSetupFailure();
}

TEST_F(PipeSecurity, MakesNoPipeAlsoWhenTheFailureHasNoNumber) {
  ImportHook<"InitializeAcl", decltype(InitializeAcl)> hook;
  hook.failOnce(NO_ERROR);
  expectSetupFailure(NO_ERROR);
}

TEST_F(PipeSecurity, ReportsItsFailureWithinASecond) {
  ImportHook<"InitializeAcl", decltype(InitializeAcl)> hook;
  hook.failOnce(kRare);
  EXPECT_TRUE(endsWithin(std::chrono::seconds(1), [&] { thrownBy<NYXException>([&] { server_->connect(); }); }));
}

TEST_F(PipeSecurity, UsesTheThreadsTokenWhenItHasOne) {
  ImportHook<"OpenThreadToken", decltype(OpenThreadToken)> threadToken;
  ImportHook<"OpenProcessToken", decltype(OpenProcessToken)> processToken;
  threadToken.replaceWith([](HANDLE, DWORD access, BOOL asSelf, HANDLE* token) {
    EXPECT_EQ(access, static_cast<DWORD>(TOKEN_QUERY));
    EXPECT_TRUE(asSelf);
    return OpenProcessToken(GetCurrentProcess(), access, token);
  });
  server_->connect();
  server_->disconnect();
  EXPECT_EQ(threadToken.calls(), 1U);
  EXPECT_EQ(processToken.calls(), 0U);
}

TEST_F(PipeSecurity, AllowsEverythingToAdministratorsThenToTheUser) {
  struct Entry {
    DWORD mask;
    std::vector<char> sid;
  };
  const auto copyOf = [](PSID sid) {
    const char* bytes = static_cast<char*>(sid);
    return std::vector<char>(bytes, bytes + GetLengthSid(sid));
  };
  std::vector<Entry> entries;
  std::vector<char> user;
  ImportHook<"AddAccessAllowedAce", decltype(AddAccessAllowedAce)> hook;
  ImportHook<"GetTokenInformation", decltype(GetTokenInformation)> token;
  hook.replaceWith([&](ACL* list, DWORD revision, DWORD mask, PSID sid) {
    EXPECT_EQ(revision, static_cast<DWORD>(ACL_REVISION));
    entries.push_back({mask, copyOf(sid)});
    return hook.callOriginal(list, revision, mask, sid);
  });
  token.replaceWith([&](HANDLE handle, TOKEN_INFORMATION_CLASS kind, void* buffer, DWORD length, DWORD* needed) {
    EXPECT_EQ(kind, TokenUser);
    const BOOL done = token.callOriginal(handle, kind, buffer, length, needed);
    if (done) user = copyOf(static_cast<TOKEN_USER*>(buffer)->User.Sid);
    return done;
  });
  server_->connect();
  server_->disconnect();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].mask, static_cast<DWORD>(GENERIC_ALL));
  const std::string administrators("\1\2\0\0\0\0\0\5\x20\0\0\0\x20\2\0\0", 16);  // S-1-5-32-544
  EXPECT_EQ(std::string(entries[0].sid.begin(), entries[0].sid.end()), administrators);
  EXPECT_EQ(entries[1].mask, static_cast<DWORD>(GENERIC_ALL));
  EXPECT_EQ(entries[1].sid, user);
}

TEST_F(PipeSecurity, IsHandedToEveryInstanceWithoutInheritance) {
  createNamedPipe_.replaceWith([&](const char* path, DWORD open, DWORD mode, DWORD instances, DWORD out, DWORD in,
                                   DWORD timeout, SECURITY_ATTRIBUTES* attributes) {
    EXPECT_EQ(attributes->nLength, 24U);
    EXPECT_FALSE(attributes->bInheritHandle);
    BOOL present = FALSE;
    BOOL defaulted = TRUE;
    ACL* list = nullptr;
    EXPECT_TRUE(GetSecurityDescriptorDacl(attributes->lpSecurityDescriptor, &present, &list, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_FALSE(defaulted);
    EXPECT_EQ(list->AceCount, 2);
    EXPECT_EQ(list->AclRevision, ACL_REVISION);
    return createNamedPipe_.callOriginal(path, open, mode, instances, out, in, timeout, attributes);
  });
  server_->connect();
  expectServes(name_);
  server_->disconnect();
  EXPECT_GE(createNamedPipe_.calls(), 2U);
  createNamedPipe_.passOn();
}

}  // namespace
}  // namespace tessel::test
