#include "support/ImportHook.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>

namespace tessel::test {
namespace {

template <class T>
T* at(HMODULE module, std::size_t offset) {
  return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + offset);
}

const IMAGE_IMPORT_DESCRIPTOR* firstImport(HMODULE module) {
  const auto* dos = at<IMAGE_DOS_HEADER>(module, 0);
  const auto* headers = at<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(dos->e_lfanew));
  const IMAGE_DATA_DIRECTORY& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  return at<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
}

void** slotIn(HMODULE module, const IMAGE_IMPORT_DESCRIPTOR& import, const char* function) {
  const auto* wanted = at<IMAGE_THUNK_DATA>(module, import.OriginalFirstThunk);
  auto* slot = at<IMAGE_THUNK_DATA>(module, import.FirstThunk);
  for (; wanted->u1.AddressOfData != 0; ++wanted, ++slot) {
    if (IMAGE_SNAP_BY_ORDINAL(wanted->u1.Ordinal)) continue;
    const auto* entry = at<IMAGE_IMPORT_BY_NAME>(module, wanted->u1.AddressOfData);
    if (std::strcmp(reinterpret_cast<const char*>(entry->Name), function) == 0) {
      return reinterpret_cast<void**>(&slot->u1.Function);
    }
  }
  return nullptr;
}

void** findSlot(const char* function) {
  const HMODULE module = GetModuleHandleA("tesselnative.dll");
  for (const auto* import = firstImport(module); import->Name != 0; ++import) {
    if (void** slot = slotIn(module, *import, function)) return slot;
  }
  throw std::runtime_error(std::string("the library does not import ") + function);
}

void write(void** slot, void* value) {
  DWORD protection = 0;
  if (!VirtualProtect(static_cast<void*>(slot), sizeof *slot, PAGE_READWRITE, &protection)) {
    throw std::runtime_error("the import table cannot be written");
  }
  InterlockedExchangePointer(slot, value);
  VirtualProtect(static_cast<void*>(slot), sizeof *slot, protection, &protection);
}

}  // namespace

ImportSlot::ImportSlot(const char* function, void* replacement) : slot_(findSlot(function)), original_(*slot_) {
  write(slot_, replacement);
}

ImportSlot::~ImportSlot() { write(slot_, original_); }

void setLastError(unsigned long error) { SetLastError(error); }

}  // namespace tessel::test
