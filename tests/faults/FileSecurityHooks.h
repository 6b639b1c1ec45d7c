// What the tests of file security put in place of the system's accounts and access lists.
#pragma once

#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/Descriptors.h"
#include "support/ImportHook.h"

namespace tessel::test {

// Keeps each access list that the library hands to the system for a file.
class HandedLists {
 public:
  struct Handed {
    std::string path;
    ListOf list;
  };

  // With `reach` the system gets them, too.
  explicit HandedLists(bool reach = false) {
    set_.replaceWith([this, reach](LPCSTR path, SECURITY_INFORMATION kind, PSECURITY_DESCRIPTOR descriptor) -> BOOL {
      EXPECT_EQ(kind, static_cast<DWORD>(DACL_SECURITY_INFORMATION));
      expectNothingButTheList(descriptor);
      handed_.push_back({path, listIn(descriptor)});
      return reach ? set_.callOriginal(path, kind, descriptor) : TRUE;
    });
  }

  const std::vector<Handed>& all() const { return handed_; }

 private:
  static void expectNothingButTheList(PSECURITY_DESCRIPTOR descriptor) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    EXPECT_TRUE(GetSecurityDescriptorControl(descriptor, &control, &revision));
    EXPECT_EQ(control, SE_DACL_PRESENT);
    EXPECT_EQ(revision, 1U);
  }

  std::vector<Handed> handed_;
  ImportHook<"SetFileSecurityA", decltype(SetFileSecurityA)> set_;
};

// Has the system know an account "omni" with this principal; with the empty one there is no such account.
class OmniAccount {
 public:
  explicit OmniAccount(const std::string& principal) : sid_(principal) {
    lookUp_.replaceWith([this](LPCSTR system, LPCSTR name, PSID sid, LPDWORD sidSize, LPSTR domain, LPDWORD domainSize,
                               PSID_NAME_USE use) -> BOOL {
      EXPECT_EQ(system, nullptr);
      EXPECT_STREQ(name, "omni");
      return answer(sid, sidSize, domain, domainSize, use);
    });
  }

  // The look-up with room for the answer fails from now on.
  void failWithRoom(DWORD error) { error_ = error; }

  unsigned calls() const { return lookUp_.calls(); }

 private:
  static constexpr const char* kDomain = "MACHINE";

  BOOL answer(PSID sid, LPDWORD sidSize, LPSTR domain, LPDWORD domainSize, PSID_NAME_USE use) const {
    if (sid_.empty()) return fail(ERROR_NONE_MAPPED);
    const auto needed = static_cast<DWORD>(sid_.size());
    const auto domainNeeded = static_cast<DWORD>(std::strlen(kDomain) + 1);
    const bool roomy = *sidSize >= needed && *domainSize >= domainNeeded;
    *sidSize = needed;
    *domainSize = domainNeeded;
    if (!roomy) return fail(ERROR_INSUFFICIENT_BUFFER);
    if (error_ != 0) return fail(error_);
    std::memcpy(sid, sid_.data(), needed);
    std::memcpy(domain, kDomain, domainNeeded);
    *use = SidTypeAlias;
    return TRUE;
  }

  static BOOL fail(DWORD error) {
    SetLastError(error);
    return FALSE;
  }

  const std::string sid_;
  DWORD error_ = 0;
  ImportHook<"LookupAccountNameA", decltype(LookupAccountNameA)> lookUp_;
};

inline const std::string kOmni = sidOf(5, {21, 1000, 2000, 3000, 1017});

}  // namespace tessel::test
