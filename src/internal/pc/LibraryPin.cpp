#include "internal/LibraryPin.h"

#include "internal/pc/Platform.h"

namespace tessel::internal {
namespace {

const char somewhereInside = 0;

}  // namespace

// Fails only for an address outside every module.
LibraryPin::LibraryPin() noexcept {
  HMODULE module = nullptr;
  if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, &somewhereInside, &module)) module_ = module;
}

LibraryPin::~LibraryPin() {
  if (module_) FreeLibrary(static_cast<HMODULE>(module_));
}

}  // namespace tessel::internal
