// The utilities on the host. Nothing here changes PATH or handles signals: no portable class asks for it.
#include <tessel/NYXUtils.h>

#include <cstdlib>
#include <system_error>

#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor NYXUtils::rd("NYXUtils", internal::kMessages);

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
