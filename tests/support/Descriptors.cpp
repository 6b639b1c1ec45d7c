#include "support/Descriptors.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

namespace tessel::test {
namespace {

std::string copyOf(PSID sid) { return {static_cast<const char*>(sid), GetLengthSid(sid)}; }

}  // namespace

std::string bytesOf(DWORD value, unsigned count) {
  std::string bytes;
  for (unsigned i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i);
  return bytes;
}

std::string sidOf(unsigned char authority, std::initializer_list<DWORD> subAuthorities) {
  std::string sid = bytesOf(1, 1) + bytesOf(static_cast<DWORD>(subAuthorities.size()), 1);
  sid += std::string(5, '\0') + static_cast<char>(authority);
  for (const DWORD sub : subAuthorities) sid += bytesOf(sub, 4);
  return sid;
}

std::string currentUser() {
  HANDLE token = nullptr;
  EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
  std::array<std::max_align_t, 64> buffer{};
  DWORD size = sizeof buffer;
  EXPECT_TRUE(GetTokenInformation(token, TokenUser, buffer.data(), size, &size));
  CloseHandle(token);
  return copyOf(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid);
}

std::ostream& operator<<(std::ostream& stream, const AceOf& ace) {
  stream << "type " << ace.type << ", flags " << ace.flags << ", mask 0x" << std::hex << ace.mask << ", sid";
  for (const char byte : ace.sid) stream << ' ' << static_cast<unsigned>(static_cast<unsigned char>(byte));
  return stream << std::dec;
}

std::string aceBytes(const AceOf& ace) { return aceBytes(ace, static_cast<unsigned>(8 + ace.sid.size())); }

std::string aceBytes(const AceOf& ace, unsigned claimedSize) {
  return bytesOf(ace.type, 1) + bytesOf(ace.flags, 1) + bytesOf(claimedSize, 2) + bytesOf(ace.mask, 4) + ace.sid;
}

std::string aclBytes(const std::string& entries, unsigned count) {
  return aclBytes(entries, count, static_cast<unsigned>(8 + entries.size()));
}

std::string aclBytes(const std::string& entries, unsigned count, unsigned claimedSize) {
  return bytesOf(ACL_REVISION, 2) + bytesOf(claimedSize, 2) + bytesOf(count, 2) + bytesOf(0, 2) + entries;
}

std::string descriptorWith(const std::string& acl) {
  return descriptorOf(SECURITY_DESCRIPTOR_REVISION, SE_DACL_PRESENT | SE_SELF_RELATIVE,
                      sizeof(SECURITY_DESCRIPTOR_RELATIVE), acl);
}

std::string descriptorWith(std::initializer_list<AceOf> entries) {
  std::string bytes;
  for (const AceOf& ace : entries) bytes += aceBytes(ace);
  return descriptorWith(aclBytes(bytes, static_cast<unsigned>(entries.size())));
}

std::string descriptorOf(DWORD revision, DWORD control, DWORD listOffset, const std::string& rest) {
  return bytesOf(revision, 2) + bytesOf(control, 2) + std::string(12, '\0') + bytesOf(listOffset, 4) + rest;
}

ListOf listIn(PSECURITY_DESCRIPTOR descriptor) {
  BOOL present = FALSE;
  BOOL defaulted = TRUE;
  ACL* list = nullptr;
  EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor, &present, &list, &defaulted));
  EXPECT_TRUE(present);
  EXPECT_FALSE(defaulted);
  if (!list) {
    ADD_FAILURE() << "the list is null";
    return {};
  }
  ListOf result{list->AclRevision, list->AclSize, {}};
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* place = nullptr;
    EXPECT_TRUE(GetAce(list, i, &place));
    auto* ace = static_cast<ACCESS_ALLOWED_ACE*>(place);
    const std::string sid = copyOf(&ace->SidStart);
    EXPECT_EQ(ace->Header.AceSize, 8 + sid.size());
    result.entries.push_back({ace->Header.AceType, ace->Header.AceFlags, ace->Mask, sid});
  }
  return result;
}

}  // namespace tessel::test
