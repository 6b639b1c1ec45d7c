#include <malloc.h>

#include <array>
#include <new>

#include <tessel/FFDC.h>
#include <tessel/FilePermissionsException.h>
#include <tessel/NYXUnsupportedOperationException.h>
#include <tessel/NYXUtils.h>
#include <tessel/WindowsGroupType.h>

#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/DescriptorReader.h"
#include "internal/pc/WellKnownSids.h"
#include "internal/pc/WindowsACLs.h"

namespace tessel {

using internal::AccessEntry;
using internal::EntryRead;
using internal::LastError;
using internal::MethodTrace;

namespace {

// A principal that must have no access.
struct WatchedGroup {
  WindowsGroupType type;
  internal::UniqueSid sid;
  bool denied = false;  // whether an entry so far denies it everything
};

using WatchedGroups = std::array<WatchedGroup, 3>;

constexpr DWORD kFullAccess = STANDARD_RIGHTS_ALL | SPECIFIC_RIGHTS_ALL;

WatchedGroup* principalOf(const AccessEntry& entry, WatchedGroups& groups) {
  if (!entry.sid) return nullptr;
  for (WatchedGroup& group : groups) {
    if (EqualSid(entry.sid, group.sid.get())) return &group;
  }
  return nullptr;
}

// Whether the entry lets the group in. Generic rights do not count, and a denial counts only when it is of everything
// and stands before.
bool letsIn(const AccessEntry& entry, WatchedGroup& group) {
  if (entry.type == ACCESS_DENIED_ACE_TYPE) {
    if ((entry.mask & kFullAccess) == kFullAccess) group.denied = true;
    return false;
  }
  return (entry.mask & kFullAccess) != 0 && !group.denied;
}

}  // namespace

void NYXUtils::mkpriv(const std::string& path, bool everyoneRead, bool everyoneWrite) {
  const MethodTrace trace(rd, nullptr, "mkpriv", path, everyoneRead, everyoneWrite);
  internal::setWindowsACLs(rd, path, false, everyoneRead, everyoneWrite);
}

void NYXUtils::mkGroupOmniWrite(const std::string& path, bool everyoneWrite) {
  const MethodTrace trace(rd, nullptr, "mkGroupOmniWrite", path, everyoneWrite);
  internal::setWindowsACLs(rd, path, true, true, everyoneWrite);
}

void NYXUtils::mkGroupWrite(const std::string& path, const std::string& group, bool flag) {
  const MethodTrace trace(rd, nullptr, "mkGroupWrite", path, group, flag);
  const NYXException failure("NYXUtils::mkGroupWrite not implemented");
  FFDC::capture(rd, "mkGroupWrite", FFDC::PROBE_001(), &failure);
  throw trace.thrown(failure);
}

void NYXUtils::chmod(const std::string& path, int mode) {
  const MethodTrace trace(rd, nullptr, "chmod", path, mode);
  throw trace.failure<NYXUnsupportedOperationException>("KTBNV0020_CHMOD_UNSUPPORTED");
}

int NYXUtils::mkdirs(const std::string& path, bool everyoneAccess) {
  constexpr int kFailed = -1;
  internal::LeaveLastError failure;
  MethodTrace trace(rd, nullptr, "mkdirs", path, everyoneAccess);
  if (path.empty()) return trace.result(0);
  // Twice at most: a drive that does not exist is not found however often its directories are made.
  for (const bool parentMade : {false, true}) {
    if (CreateDirectoryA(path.c_str(), nullptr)) {
      mkpriv(path, everyoneAccess, everyoneAccess);
      return trace.result(0);
    }
    failure.take();
    if (failure.number() == ERROR_ALREADY_EXISTS) return trace.result(internal::isDirectory(path) ? 0 : kFailed);
    if (failure.number() != ERROR_PATH_NOT_FOUND || parentMade) break;
    if (mkdirs(getParent(path), everyoneAccess) != 0) {
      failure.take();
      break;
    }
  }
  return trace.result(kFailed);
}

void NYXUtils::checkFilePermissions(const std::string& path) {
  const MethodTrace trace(rd, nullptr, "checkFilePermissions", path);
  const auto failure = [&](const char* key) {
    const LastError error;
    return trace.failure<FilePermissionsException>(key, error.text(), path);
  };
  const internal::UniqueHeapBlock block(getSecurityDescriptor(path));
  internal::UniqueSid everyone = internal::everyoneSid();
  if (!everyone) throw failure("KTBNV0141_ALLOCATEANDINITIALIZESID_ERROR");
  internal::UniqueSid guests = internal::guestsSid();
  if (!guests) throw failure("KTBNV0142_ALLOCATEANDINITIALIZESID_ERROR");
  internal::UniqueSid users = internal::usersSid();
  if (!users) throw failure("KTBNV0143_ALLOCATEANDINITIALIZESID_ERROR");
  WatchedGroups groups{{{WindowsGroupType::GUESTS, std::move(guests)},
                        {WindowsGroupType::USERS, std::move(users)},
                        {WindowsGroupType::EVERYONE, std::move(everyone)}}};

  internal::DescriptorReader descriptor(block.get(), _msize(const_cast<void*>(block.get())));
  if (!descriptor.findList()) throw failure("KTBNV0144_GETSECURITYDESCRIPTORDACL_ERROR");
  if (!descriptor.hasList()) throw trace.failure<FilePermissionsException>("KTBNV0146_ALL_USERS_HAVE_ACCESS", path);
  for (;;) {
    AccessEntry entry{};
    const EntryRead read = descriptor.next(entry);
    if (read == EntryRead::failed) throw failure("KTBNV0147_GETACE_ERROR");
    if (read == EntryRead::end) return;
    WatchedGroup* group = principalOf(entry, groups);
    if (group && letsIn(entry, *group)) {
      throw trace.failure<FilePermissionsException>("KTBNV0145_GROUP_HAS_ACCESS", group->type.toString(), path);
    }
  }
}

const void* NYXUtils::getSecurityDescriptor(std::string path) {
  const MethodTrace trace(rd, nullptr, "getSecurityDescriptor", path);
  const auto failure = [&](const char* key) {
    const LastError error;
    return trace.failure<FilePermissionsException>(key, error.text(), path);
  };
  DWORD size = 0;
  if (GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size)) {
    throw trace.failure<FilePermissionsException>("KTBNV0140_GETFILESECURITY_ERROR", path);
  }
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) throw failure("KTBNV0139_GETFILESECURITY_ERROR");
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): the caller releases it with free
  internal::UniqueHeapBlock block(std::calloc(1, size));
  if (!block) throw std::bad_alloc();
  if (!GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, const_cast<void*>(block.get()), size, &size)) {
    throw failure("KTBNV0138_GETFILESECURITY_ERROR");
  }
  return block.release();
}

}  // namespace tessel
