// Who may open a server's pipe: the access list as the system keeps it.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstddef>
#include <vector>

#include "support/EchoListener.h"
#include "support/PipePeers.h"
#include "support/RawPipe.h"

namespace tessel::test {
namespace {

using Block = std::vector<std::max_align_t>;  // aligned for what the system writes into it

Block userOfThisProcess() {
  HANDLE token = nullptr;
  OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
  Block block(16);
  DWORD length = 0;
  const auto size = static_cast<DWORD>(block.size() * sizeof(block[0]));
  EXPECT_TRUE(GetTokenInformation(token, TokenUser, block.data(), size, &length));
  CloseHandle(token);
  return block;
}

Block administrators() {
  Block block(16);
  auto size = static_cast<DWORD>(block.size() * sizeof(block[0]));
  EXPECT_TRUE(CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, block.data(), &size));
  return block;
}

class PipeAccess : public testing::Test {
 protected:
  void SetUp() override {
    const RawClient client(server_.name());
    DWORD length = 0;
    GetKernelObjectSecurity(client.handle(), DACL_SECURITY_INFORMATION, nullptr, 0, &length);
    descriptor_.resize(length / sizeof(std::max_align_t) + 1);
    ASSERT_TRUE(
        GetKernelObjectSecurity(client.handle(), DACL_SECURITY_INFORMATION, descriptor_.data(), length, &length));
    BOOL present = FALSE;
    BOOL defaulted = TRUE;
    ASSERT_TRUE(GetSecurityDescriptorDacl(descriptor_.data(), &present, &list_, &defaulted));
    ASSERT_TRUE(present);
    EXPECT_FALSE(defaulted);
    ASSERT_NE(list_, nullptr);
  }

  const ACCESS_ALLOWED_ACE& entry(DWORD index) const {
    void* entry = nullptr;
    EXPECT_TRUE(GetAce(list_, index, &entry));
    return *static_cast<ACCESS_ALLOWED_ACE*>(entry);
  }

  // A new object's generic rights are mapped to those of files.
  void expectFullAccess(const ACCESS_ALLOWED_ACE& allowed, PSID sid) const {
    EXPECT_EQ(allowed.Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
    EXPECT_EQ(allowed.Header.AceFlags, 0);
    GENERIC_MAPPING files{FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE, FILE_ALL_ACCESS};
    DWORD mask = allowed.Mask;
    MapGenericMask(&mask, &files);
    EXPECT_EQ(mask, static_cast<DWORD>(FILE_ALL_ACCESS));
    const DWORD* start = &allowed.SidStart;
    EXPECT_TRUE(EqualSid(const_cast<DWORD*>(start), sid));
  }

  EchoListener listener_;
  TestServer server_{listener_};
  Block descriptor_;
  ACL* list_ = nullptr;
};

TEST_F(PipeAccess, IsGivenToTwoAccounts) { EXPECT_EQ(list_->AceCount, 2); }

TEST_F(PipeAccess, IsGivenToAdministratorsFirst) { expectFullAccess(entry(0), administrators().data()); }

TEST_F(PipeAccess, IsGivenToTheUserOfTheServerNext) {
  Block user = userOfThisProcess();
  expectFullAccess(entry(1), reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid);
}

TEST_F(PipeAccess, IsTheSameForEveryInstance) {
  const RawClient busy(server_.name());
  const RawClient next(server_.name());
  DWORD length = 0;
  GetKernelObjectSecurity(next.handle(), DACL_SECURITY_INFORMATION, nullptr, 0, &length);
  Block other(length / sizeof(std::max_align_t) + 1);
  ASSERT_TRUE(GetKernelObjectSecurity(next.handle(), DACL_SECURITY_INFORMATION, other.data(), length, &length));
  ASSERT_EQ(other.size(), descriptor_.size());
  EXPECT_EQ(std::string(reinterpret_cast<char*>(other.data()), length),
            std::string(reinterpret_cast<char*>(descriptor_.data()), length));
}

}  // namespace
}  // namespace tessel::test
