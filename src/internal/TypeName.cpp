#include "internal/TypeName.h"

#if !defined(_MSC_VER)
#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#endif

namespace tessel::internal {
namespace {

#if defined(_MSC_VER)
std::string readableName(const std::type_info& type) { return type.name(); }
#else
std::string readableName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                    std::free);
  return status == 0 ? name.get() : type.name();
}
#endif

}  // namespace

std::string classText(const std::type_info& type) {
  const std::string name = readableName(type);
  const std::size_t qualifier = name.find_last_of(": ");
  return "class " + (qualifier == std::string::npos ? name : name.substr(qualifier + 1));
}

}  // namespace tessel::internal
