// Securing a file and checking it, against the bare system calls that this takes.
#include <stdexcept>
#include <string>
#include <vector>

#include <tessel/NYXUtils.h>

#include "BenchTimer.h"
#include "internal/pc/UniqueHandle.h"
#include "internal/pc/WellKnownSids.h"

namespace {

using tessel::internal::UniqueHandle;
using tessel::internal::UniqueSid;

constexpr DWORD kOwner = 0xC01F0000;

void require(bool done) {
  if (!done) throw std::runtime_error("a system call failed with error " + std::to_string(GetLastError()));
}

// A file of its own, which goes away.
class File {
 public:
  File() {
    char folder[MAX_PATH];
    char path[MAX_PATH];
    require(GetTempPathA(MAX_PATH, folder) != 0 && GetTempFileNameA(folder, "tsl", 0, path) != 0);
    path_ = path;
  }
  ~File() { DeleteFileA(path_.c_str()); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::vector<DWORD> currentUser() {
  UniqueHandle token;
  require(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive()));
  DWORD size = 0;
  GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
  std::vector<DWORD> user(size / sizeof(DWORD) + 1);
  require(GetTokenInformation(token.get(), TokenUser, user.data(), size, &size));
  return user;
}

void secure(const std::string& path) {
  std::vector<DWORD> buffer = currentUser();
  PSID user = reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid;
  const UniqueSid administrators = tessel::internal::administratorsSid();
  DWORD storage[64]{};
  ACL* list = reinterpret_cast<ACL*>(storage);
  require(InitializeAcl(list, sizeof storage, ACL_REVISION));
  const DWORD flags = (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0
                          ? OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE
                          : 0;
  require(AddAccessAllowedAceEx(list, ACL_REVISION, flags, kOwner, user));
  require(AddAccessAllowedAceEx(list, ACL_REVISION, flags, kOwner, administrators.get()));
  SECURITY_DESCRIPTOR descriptor{};
  require(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
  require(SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE));
  require(SetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, &descriptor));
}

void check(const std::string& path) {
  DWORD size = 0;
  GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  std::vector<DWORD> block(size / sizeof(DWORD) + 1);
  require(GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, block.data(), size, &size));
  const UniqueSid groups[] = {tessel::internal::guestsSid(), tessel::internal::usersSid(),
                              tessel::internal::everyoneSid()};
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  ACL* list = nullptr;
  require(GetSecurityDescriptorDacl(block.data(), &present, &list, &defaulted) && present && list);
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* ace = nullptr;
    require(GetAce(list, i, &ace));
    for (const UniqueSid& group : groups) {
      require(!EqualSid(&static_cast<ACCESS_ALLOWED_ACE*>(ace)->SidStart, group.get()));
    }
  }
}

}  // namespace

int main() {
  try {
    const File file;
    const std::string& path = file.path();
    bench::printTimes("files: mkpriv of a file",
                      bench::compareCalls([&] { tessel::NYXUtils::mkpriv(path, false, false); }, [&] { secure(path); }),
                      "the bare system calls", 1.3);
    bench::printTimes("files: checkFilePermissions",
                      bench::compareCalls([&] { tessel::NYXUtils::checkFilePermissions(path); }, [&] { check(path); }),
                      "the bare system calls", 1.3);
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "bench_files: %s\n", exception.what());
    return 1;
  }
}
