#include "support/Handles.h"

#include <windows.h>
#include <winternl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
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

using Query = NTSTATUS(NTAPI*)(int, void*, ULONG, ULONG*);

Query findQuery() {
  const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  return reinterpret_cast<Query>(reinterpret_cast<void*>(GetProcAddress(ntdll, "NtQuerySystemInformation")));
}

std::vector<std::max_align_t> readTable() {
  static const Query query = findQuery();
  std::vector<std::max_align_t> buffer(4096);
  for (;;) {
    const auto size = static_cast<ULONG>(buffer.size() * sizeof buffer[0]);
    const NTSTATUS status = query(kHandleInformation, buffer.data(), size, nullptr);
    if (status >= 0) return buffer;
    if (status != kBufferTooSmall) throw std::runtime_error("the handle table cannot be read");
    buffer.resize(buffer.size() * 2);
  }
}

}  // namespace

long openHandles() {
  const std::vector<std::max_align_t> buffer = readTable();
  const auto* table = reinterpret_cast<const HandleTable*>(buffer.data());
  const auto self = static_cast<USHORT>(GetCurrentProcessId());
  return static_cast<long>(std::count_if(table->entries, table->entries + table->count,
                                         [self](const HandleEntry& entry) { return entry.processId == self; }));
}

HandleBaseline::HandleBaseline() {
  EXPECT_THROW(IPCMessage(nullptr, 0), NYXException);
  const LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "");
  // Threads of the test before may still be on their way out.
  constexpr int kQuiet = 3;
  before_ = openHandles();
  for (int quiet = 0; quiet < kQuiet;) {
    Sleep(5);
    const long now = openHandles();
    quiet = now == before_ ? quiet + 1 : 0;
    before_ = now;
  }
}

}  // namespace tessel::test
