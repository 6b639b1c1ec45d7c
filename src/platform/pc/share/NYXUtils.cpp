#include <tessel/NYXUtils.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <vector>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/NYXIOException.h>
#include <tessel/ProcessSignalActionHandler.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/Token.h"
#include "internal/pc/UniqueHandle.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor NYXUtils::rd("NYXUtils", internal::kMessages);

namespace {

std::atomic<ProcessSignalActionHandler*> signalHandler{nullptr};

constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGBREAK};

enum class AccountLookup { found, unnamed, failed };

AccountLookup accountName(PSID sid, std::string& name) {
  std::array<char, 256> account{};
  std::array<char, 271> domain{};
  DWORD accountLength = 256;
  DWORD domainLength = 271;
  SID_NAME_USE use{};
  if (LookupAccountSidA(nullptr, sid, account.data(), &accountLength, domain.data(), &domainLength, &use)) {
    name = account.data();
    return AccountLookup::found;
  }
  return GetLastError() == ERROR_NONE_MAPPED ? AccountLookup::unnamed : AccountLookup::failed;
}

}  // namespace

bool NYXUtils::isCurrentUserMemberOfGroup(const std::string& groupName) {
  MethodTrace trace(rd, nullptr, "isCurrentUserMemberOfGroup", groupName);
  const auto failure = [&trace](const char* key) {
    const LastError error;
    return trace.failure<NYXIOException>(key, error.text());
  };
  internal::UniqueHandle token;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive())) {
    throw failure("KTBNV0129_OPENPROCESSTOKEN_FAILED");
  }
  internal::TokenBuffer buffer;
  switch (internal::readToken(token.get(), TokenGroups, buffer)) {
    case internal::TokenRead::sizeFailed:
      throw failure("KTBNV0130_OPENPROCESSTOKEN_FAILED");
    case internal::TokenRead::readFailed:
      throw failure("KTBNV0131_GETTOKENINFORMATION_FAILED");
    case internal::TokenRead::done:
      break;
  }
  const auto* groups = reinterpret_cast<const TOKEN_GROUPS*>(buffer.data());
  for (DWORD i = 0; i < groups->GroupCount; ++i) {
    std::string name;
    const AccountLookup lookup = accountName(groups->Groups[i].Sid, name);
    if (lookup == AccountLookup::failed) throw failure("KTBNV0132_LOOKUPACCOUNTSID_FAILED");
    if (lookup == AccountLookup::found && !name.empty() && name == groupName) return trace.result(true);
  }
  return trace.result(false);
}

bool NYXUtils::doesCurrentUserHaveSpecialAuthority(const std::string& authority) {
  MethodTrace trace(rd, nullptr, "doesCurrentUserHaveSpecialAuthority", authority);
  return trace.result(false);
}

std::string NYXUtils::getUID() {
  const MethodTrace trace(rd, nullptr, "getUID");
  const NYXException failure("NYXUtils::getUID not implemented");
  FFDC::capture(rd, "getUID", FFDC::PROBE_001(), &failure);
  throw trace.thrown(failure);
}

std::string NYXUtils::getenv(const std::string& name) {
  MethodTrace trace(rd, nullptr, "getenv", name);
  constexpr DWORD kLongestValue = 32767;
  std::vector<char> value(kLongestValue);
  const DWORD length = GetEnvironmentVariableA(name.c_str(), value.data(), kLongestValue);
  return trace.result(std::string(value.data(), length < kLongestValue ? length : 0));
}

void NYXUtils::setenv(const std::string& name, const std::string& value) {
  const MethodTrace trace(rd, nullptr, "setenv", name, value);
  if (!SetEnvironmentVariableA(name.c_str(), value.c_str())) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0110_SETENV_FAILED", name, error.text());
  }
}

std::string NYXUtils::getKTBProdRoot() {
  MethodTrace trace(rd, nullptr, "getKTBProdRoot");
  const std::string root = getenv("KTB_PROD");
  return trace.result(root.empty() ? getenv("NYX_PROD") : root);
}

void NYXUtils::addBinDirToPath(const std::string& dir) {
  const MethodTrace trace(rd, nullptr, "addBinDirToPath", dir);
  const std::string binaries = dir + separator() + ".." + separator() + "bin64";
  const std::string path = getenv("PATH");
  setenv("PATH", path.empty() ? binaries : binaries + ";" + path);
}

std::string NYXUtils::getCwd() {
  MethodTrace trace(rd, nullptr, "getCwd");
  std::array<char, MAX_PATH + 1> directory{};
  const DWORD length = GetCurrentDirectoryA(static_cast<DWORD>(directory.size()), directory.data());
  return trace.result(std::string(directory.data(), length < directory.size() ? length : 0));
}

std::string NYXUtils::separator() {
  MethodTrace trace(rd, nullptr, "separator");
  return trace.result(std::string("\\"));
}

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
  std::array<char, 4096> text{};
  const DWORD length =
      FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, static_cast<DWORD>(error), 0,
                     text.data(), static_cast<DWORD>(text.size()), nullptr);
  const std::string message(text.data(), length);
  const std::size_t last = message.find_last_not_of("\r\n");
  return trace.result(length == 0 ? std::to_string(error) : message.substr(0, last + 1));
}

void NYXUtils::handleSignals(ProcessSignalActionHandler* handler) {
  const MethodTrace trace(rd, nullptr, "handleSignals", static_cast<const void*>(handler));
  signalHandler = handler;
  for (const int signal : kSignals) std::signal(signal, handler ? &NYXUtils::SignalHandler : SIG_DFL);
}

// The system forgets the handler when it calls it.
void NYXUtils::SignalHandler(int signal) {
  std::signal(signal, &NYXUtils::SignalHandler);
  if (ProcessSignalActionHandler* handler = signalHandler) handler->action(signal);
}

void NYXUtils::newProcessSession() { const MethodTrace trace(rd, nullptr, "newProcessSession"); }

}  // namespace tessel
