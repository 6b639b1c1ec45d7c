#include "internal/pc/WindowsACLs.h"

#include <cstddef>
#include <vector>

#include <tessel/NYXIOException.h>

#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/AccessList.h"
#include "internal/pc/Token.h"
#include "internal/pc/WellKnownSids.h"

namespace tessel::internal {
namespace {

constexpr DWORD kAllStandardRights = STANDARD_RIGHTS_ALL;

// What an entry of the list grants; one set for directories and one for files.
struct Rights {
  DWORD flags;
  DWORD owner;
  DWORD everyoneRead;
  DWORD everyoneWrite;
};

constexpr Rights kOfDirectory{
    .flags = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE,
    .owner = GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | kAllStandardRights,
    .everyoneRead = GENERIC_READ | GENERIC_EXECUTE,
    .everyoneWrite = GENERIC_WRITE | kAllStandardRights,
};

constexpr Rights kOfFile{
    .flags = 0,
    .owner = GENERIC_READ | GENERIC_WRITE | kAllStandardRights,
    .everyoneRead = GENERIC_READ,
    .everyoneWrite = GENERIC_WRITE | kAllStandardRights,
};

// One list on its way to the file. Each step throws when its system call fails.
class FileAccess {
 public:
  FileAccess(const MethodTrace& trace, const std::string& path) : trace_(trace), path_(path) {}

  void readUser();
  void makeAdministrators();
  void lookUpOmni();
  void makeEveryone();
  void makeList(bool everyoneRead, bool everyoneWrite);
  void apply();

 private:
  NYXIOException failure(const char* key) const {
    const LastError error;
    return trace_.failure<NYXIOException>(key, error.text(), path_);
  }

  PSID user() { return reinterpret_cast<TOKEN_USER*>(user_.data())->User.Sid; }

  const MethodTrace& trace_;
  const std::string& path_;
  TokenBuffer user_;
  UniqueSid administrators_;
  std::vector<std::byte> omni_;  // empty: no entry
  UniqueSid everyone_;           // null: no entry
  AccessList list_;
};

void FileAccess::readUser() {
  UniqueHandle token;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive())) {
    throw failure("KTBNV0021_OPENPROCESSTOKEN_ERROR");
  }
  if (!internal::readUser(token.get(), user_)) throw failure("KTBNV0022_GETTOKENINFORMATION_ERROR");
  list_.addRoomFor(user());
}

void FileAccess::makeAdministrators() {
  administrators_ = administratorsSid();
  if (!administrators_) throw failure("KTBNV0023_ALLOCATEANDINITIALIZESID_ERROR");
  list_.addRoomFor(administrators_.get());
}

void FileAccess::lookUpOmni() {
  static const std::string name = "omni";
  DWORD sidSize = 0;
  DWORD domainSize = 0;
  SID_NAME_USE use{};
  LookupAccountNameA(nullptr, name.c_str(), nullptr, &sidSize, nullptr, &domainSize, &use);
  if (sidSize == 0) return;
  std::vector<std::byte> sid(sidSize);
  std::vector<char> domain(domainSize);
  if (!LookupAccountNameA(nullptr, name.c_str(), sid.data(), &sidSize, domain.data(), &domainSize, &use)) {
    const LastError error;
    throw trace_.failure<NYXIOException>("KTBNV0172_LOOKUPACCOUNTNAME_ERROR", error.text(), name);
  }
  if (!IsValidSid(sid.data())) {
    trace_.data(TraceLevel::FLOW, "Unexpectedly unable to retrieve valid SID for omni user/group.");
    return;
  }
  omni_ = std::move(sid);
  list_.addRoomFor(omni_.data());
}

void FileAccess::makeEveryone() {
  everyone_ = everyoneSid();
  if (!everyone_) throw failure("KTBNV0024_ALLOCATEANDINITIALIZESID_ERROR");
  list_.addRoomFor(everyone_.get());
}

void FileAccess::makeList(bool everyoneRead, bool everyoneWrite) {
  if (!list_.initialize()) throw failure("KTBNV0025_INITIALIZEACL_ERROR");
  const Rights& rights = isDirectory(path_) ? kOfDirectory : kOfFile;
  const auto allow = [&](PSID principal, DWORD mask) { return list_.allow(principal, mask, rights.flags); };
  if (!allow(user(), rights.owner)) throw failure("KTBNV0026_ADDACCESSALLOWEDACE_ERROR");
  if (!allow(administrators_.get(), rights.owner)) throw failure("KTBNV0027_ADDACCESSALLOWEDACE_ERROR");
  // The group administers as well, and shares the message.
  if (!omni_.empty() && !allow(omni_.data(), rights.owner)) throw failure("KTBNV0027_ADDACCESSALLOWEDACE_ERROR");
  if (!everyone_) return;
  const DWORD mask = (everyoneRead ? rights.everyoneRead : 0) | (everyoneWrite ? rights.everyoneWrite : 0);
  if (!allow(everyone_.get(), mask)) throw failure("KTBNV0028_ADDACCESSALLOWEDACE_ERROR");
}

void FileAccess::apply() {
  SECURITY_DESCRIPTOR descriptor{};
  if (!InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION)) {
    throw failure("KTBNV0029_INITIALIZESECURITYDESCRIPTOR_ERROR");
  }
  if (!SetSecurityDescriptorDacl(&descriptor, TRUE, list_.get(), FALSE)) {
    throw failure("KTBNV0030_SETSECURITYDESCRIPTORDACL_ERROR");
  }
  if (!SetFileSecurityA(path_.c_str(), DACL_SECURITY_INFORMATION, &descriptor)) {
    throw failure("KTBNV0031_SETFILESECURITY_ERROR");
  }
}

}  // namespace

// A copy of its own: nobody assigns to the descriptor while this is traced under it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void setWindowsACLs(RasDescriptor descriptor, const std::string& path, bool omniGroup, bool everyoneRead,
                    bool everyoneWrite) {
  const MethodTrace trace(descriptor, nullptr, "setWindowsACLs", path, omniGroup, everyoneRead, everyoneWrite);
  FileAccess access(trace, path);
  access.readUser();
  access.makeAdministrators();
  if (omniGroup) access.lookUpOmni();
  if (everyoneRead || everyoneWrite) access.makeEveryone();
  access.makeList(everyoneRead, everyoneWrite);
  access.apply();
}

bool isDirectory(const std::string& path) { return (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0; }

}  // namespace tessel::internal
