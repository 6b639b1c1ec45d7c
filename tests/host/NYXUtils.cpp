// The utilities on the host. Nothing here changes PATH or handles signals: no portable class asks for it.
#include <tessel/NYXUtils.h>

#include <grp.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <tessel/FilePermissionsException.h>
#include <tessel/NYXException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXUnsupportedOperationException.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor NYXUtils::rd("NYXUtils", internal::kMessages);

namespace {

namespace fs = std::filesystem;

constexpr fs::perms kStrangers = fs::perms::group_all | fs::perms::others_all;

fs::perms strangersRights(bool directory, bool read, bool write) {
  const fs::perms search = directory ? fs::perms::others_exec : fs::perms::none;
  return (read ? fs::perms::others_read | search : fs::perms::none) |
         (write ? fs::perms::others_write : fs::perms::none);
}

}  // namespace

void NYXUtils::mkpriv(const std::string& path, bool everyoneRead, bool everyoneWrite) {
  const MethodTrace trace(rd, nullptr, "mkpriv", path, everyoneRead, everyoneWrite);
  std::error_code error;
  const bool directory = fs::is_directory(path, error);
  const fs::perms owner = directory ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_write;
  fs::permissions(path, owner | strangersRights(directory, everyoneRead, everyoneWrite), error);
  if (error) throw trace.failure<NYXIOException>("KTBNV0031_SETFILESECURITY_ERROR", error.message(), path);
}

int NYXUtils::mkdirs(const std::string& path, bool everyoneAccess) {
  constexpr int kFailed = -1;
  MethodTrace trace(rd, nullptr, "mkdirs", path, everyoneAccess);
  std::error_code error;
  if (path.empty() || fs::is_directory(path, error)) return trace.result(0);
  if (fs::exists(path, error) || mkdirs(getParent(path), everyoneAccess) != 0) return trace.result(kFailed);
  if (!fs::create_directory(path, error)) return trace.result(fs::is_directory(path, error) ? 0 : kFailed);
  mkpriv(path, everyoneAccess, everyoneAccess);
  return trace.result(0);
}

void NYXUtils::checkFilePermissions(const std::string& path) {
  const MethodTrace trace(rd, nullptr, "checkFilePermissions", path);
  std::error_code error;
  const fs::perms rights = fs::status(path, error).permissions();
  if (error) throw trace.failure<FilePermissionsException>("KTBNV0139_GETFILESECURITY_ERROR", error.message(), path);
  if ((rights & kStrangers) != fs::perms::none) {
    throw trace.failure<FilePermissionsException>("KTBNV0145_GROUP_HAS_ACCESS", "Everyone", path);
  }
}

void NYXUtils::mkGroupOmniWrite(const std::string& path, bool everyoneWrite) {
  const MethodTrace trace(rd, nullptr, "mkGroupOmniWrite", path, everyoneWrite);
  mkpriv(path, true, everyoneWrite);
}

void NYXUtils::mkGroupWrite(const std::string& path, const std::string& group, bool flag) {
  const MethodTrace trace(rd, nullptr, "mkGroupWrite", path, group, flag);
  throw trace.thrown(NYXException("NYXUtils::mkGroupWrite not implemented"));
}

void NYXUtils::chmod(const std::string& path, int mode) {
  const MethodTrace trace(rd, nullptr, "chmod", path, mode);
  throw trace.failure<NYXUnsupportedOperationException>("KTBNV0020_CHMOD_UNSUPPORTED");
}

bool NYXUtils::isCurrentUserMemberOfGroup(const std::string& groupName) {
  MethodTrace trace(rd, nullptr, "isCurrentUserMemberOfGroup", groupName);
  const group* entry = ::getgrnam(groupName.c_str());
  return trace.result(entry && entry->gr_gid == ::getegid());
}

bool NYXUtils::doesCurrentUserHaveSpecialAuthority(const std::string& authority) {
  MethodTrace trace(rd, nullptr, "doesCurrentUserHaveSpecialAuthority", authority);
  return trace.result(false);
}

std::string NYXUtils::getenv(const std::string& name) {
  MethodTrace trace(rd, nullptr, "getenv", name);
  const char* value = ::getenv(name.c_str());
  return trace.result(std::string(value ? value : ""));
}

void NYXUtils::setenv(const std::string& name, const std::string& value) {
  const MethodTrace trace(rd, nullptr, "setenv", name, value);
  if (::setenv(name.c_str(), value.c_str(), 1) != 0) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0110_SETENV_FAILED", name, error.text());
  }
}

std::string NYXUtils::getKTBProdRoot() {
  MethodTrace trace(rd, nullptr, "getKTBProdRoot");
  const std::string root = getenv("KTB_PROD");
  return trace.result(root.empty() ? getenv("NYX_PROD") : root);
}

std::string NYXUtils::separator() { return "/"; }

std::string NYXUtils::getParent(const std::string& path) {
  MethodTrace trace(rd, nullptr, "getParent", path);
  const std::size_t last = path.find_last_of("/\\");
  return trace.result(last == std::string::npos ? std::string() : path.substr(0, last));
}

std::string NYXUtils::getName(const std::string& path) {
  MethodTrace trace(rd, nullptr, "getName", path);
  return trace.result(path.substr(path.rfind('/') + 1));
}

std::string NYXUtils::getLastErrorMessage() {
  const LastError error;
  return getLastErrorMessage(static_cast<int>(error.number()));
}

std::string NYXUtils::getLastErrorMessage(int error) {
  MethodTrace trace(rd, nullptr, "getLastErrorMessage", error);
  return trace.result(std::generic_category().message(error));
}

}  // namespace tessel
