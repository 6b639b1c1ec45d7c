#include "platform/pc/share/SecurityData.h"

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/WellKnownSids.h"

namespace tessel {

using internal::MethodTrace;

const RasDescriptor SecurityData::rd("SecurityData", internal::kMessages);

namespace {

PSID userOf(internal::TokenBuffer& buffer) { return reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid; }

// The thread's own token when it impersonates, else the process's.
bool openToken(internal::UniqueHandle& token) {
  if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.receive())) return true;
  return GetLastError() == ERROR_NO_TOKEN && OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive());
}

}  // namespace

unsigned long SecurityData::setSecurityAttributes() {
  MethodTrace trace(rd, this, "setSecurityAttributes");
  const internal::UniqueSid administrators = internal::administratorsSid();
  built_ = administrators && readUser() && buildList(administrators.get()) && buildDescriptor();
  const internal::LastError error;
  if (!built_) return trace.result(error.number());
  attributes_.nLength = sizeof attributes_;
  attributes_.lpSecurityDescriptor = &descriptor_;
  attributes_.bInheritHandle = FALSE;
  return trace.result(static_cast<unsigned long>(NO_ERROR));
}

SECURITY_ATTRIBUTES* SecurityData::getSecurityAttributes() { return built_ ? &attributes_ : nullptr; }

bool SecurityData::readUser() {
  internal::UniqueHandle token;
  return openToken(token) && internal::readToken(token.get(), TokenUser, user_) == internal::TokenRead::done;
}

bool SecurityData::buildList(PSID administrators) {
  constexpr DWORD kListHeaderAndEntries = 24;
  PSID user = userOf(user_);
  const DWORD size = kListHeaderAndEntries + GetLengthSid(administrators) + GetLengthSid(user);
  list_.assign(size / sizeof(DWORD), 0);
  ACL* list = reinterpret_cast<ACL*>(list_.data());
  return InitializeAcl(list, size, ACL_REVISION) &&
         AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, administrators) &&
         AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, user);
}

bool SecurityData::buildDescriptor() {
  return InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) &&
         SetSecurityDescriptorDacl(&descriptor_, TRUE, reinterpret_cast<ACL*>(list_.data()), FALSE);
}

}  // namespace tessel
