#include "support/Handles.h"

#include <windows.h>
#include <winternl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <vector>

#include <tessel/IPCMessage.h>
#include <tessel/LogRecord.h>
#include <tessel/NYXException.h>

namespace tessel::test {
namespace {

// SystemHandleInformation; the number of handles stands before the entries.
constexpr int kHandleInformation = 16;
constexpr NTSTATUS kBufferTooSmall = static_cast<NTSTATUS>(0xC0000004);

struct HandleEntry {
  USHORT processId;
  USHORT backTrace;
  UCHAR type;
  UCHAR attributes;
  USHORT value;
  void* object;
  ACCESS_MASK access;
};

struct HandleTable {
  ULONG count;
  HandleEntry entries[1];
};

struct EventState {
  LONG type;
  LONG signalled;
};

constexpr LONG kAutoReset = 1;

using QueryTable = NTSTATUS(NTAPI*)(int, void*, ULONG, ULONG*);
using QueryEvent = NTSTATUS(NTAPI*)(HANDLE, int, void*, ULONG, ULONG*);

template <class Function>
Function findSystemCall(const char* name) {
  const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(ntdll, name)));
}

std::vector<std::max_align_t> readTable() {
  static const auto query = findSystemCall<QueryTable>("NtQuerySystemInformation");
  std::vector<std::max_align_t> buffer(4096);
  for (;;) {
    const auto size = static_cast<ULONG>(buffer.size() * sizeof buffer[0]);
    const NTSTATUS status = query(kHandleInformation, buffer.data(), size, nullptr);
    if (status >= 0) return buffer;
    if (status != kBufferTooSmall) throw std::runtime_error("the handle table cannot be read");
    buffer.resize(buffer.size() * 2);
  }
}

std::vector<HandleEntry> ownHandles() {
  const std::vector<std::max_align_t> buffer = readTable();
  const auto* table = reinterpret_cast<const HandleTable*>(buffer.data());
  const auto self = static_cast<USHORT>(GetCurrentProcessId());
  std::vector<HandleEntry> own;
  std::copy_if(table->entries, table->entries + table->count, std::back_inserter(own),
               [self](const HandleEntry& entry) { return entry.processId == self; });
  return own;
}

// Anything but an event is not: the call says that it is of another type.
bool isAutoResetEvent(const HandleEntry& entry) {
  static const auto query = findSystemCall<QueryEvent>("NtQueryEvent");
  EventState state{};
  const auto handle = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(entry.value));
  return query(handle, 0, &state, sizeof state, nullptr) >= 0 && state.type == kAutoReset;
}

}  // namespace

HandleBaseline::Count HandleBaseline::count() {
  const std::vector<HandleEntry> own = ownHandles();
  return {static_cast<long>(own.size()), static_cast<long>(std::count_if(own.begin(), own.end(), isAutoResetEvent))};
}

HandleBaseline::HandleBaseline() {
  EXPECT_THROW(IPCMessage(nullptr, 0), NYXException);
  const LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "");
  // Threads of the test before may still be on their way out.
  constexpr int kQuiet = 3;
  before_ = count();
  for (int quiet = 0; quiet < kQuiet;) {
    Sleep(5);
    const Count now = count();
    quiet = now == before_ ? quiet + 1 : 0;
    before_ = now;
  }
}

}  // namespace tessel::test
