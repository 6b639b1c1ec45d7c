// Stands in for the client library of the messaging middleware. What it answers is told by environment variables, read
// at each call:
//
//   TESSEL_QM_CONNECT, TESSEL_QM_DISCONNECT   completion code and reason, as "2,2059"; 0 and 0 when not set
//   TESSEL_QM_DELAY                           milliseconds before each answer
//   TESSEL_QM_LOG                             a file to which each call appends a line
//
// QM_WITHOUT_CONNECT and QM_WITHOUT_DISCONNECT leave an entry point out; QM_WITH_DEPENDENCY makes it need another
// library.
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#ifdef QM_WITH_DEPENDENCY
extern "C" __declspec(dllimport) long omniNeeded();
#else
static long omniNeeded() { return 0; }
#endif

namespace {

constexpr std::int32_t kHandle = 4711;

std::string variable(const char* name) {
  char value[1024];
  const DWORD length = GetEnvironmentVariableA(name, value, sizeof value);
  return {value, length < sizeof value ? length : 0};
}

void note(const std::string& line) {
  const std::string path = variable("TESSEL_QM_LOG");
  if (!path.empty()) std::ofstream(path, std::ios::app) << line << '\n';
}

[[maybe_unused]] void answer(const char* codes, long* completionCode, long* reason) {
  Sleep(std::strtoul(variable("TESSEL_QM_DELAY").c_str(), nullptr, 10));
  const std::string values = variable(codes);
  const std::size_t comma = values.find(',');
  *completionCode = std::strtol(values.c_str(), nullptr, 10);
  *reason = comma == std::string::npos ? omniNeeded() : std::strtol(values.c_str() + comma + 1, nullptr, 10);
}

}  // namespace

extern "C" {

#ifndef QM_WITHOUT_CONNECT
__declspec(dllexport) void ZXCONN(const char* name, std::int32_t* handle, long* completionCode, long* reason) {
  note("ZXCONN " + std::string(name) + " " + std::to_string(*handle));
  *handle = kHandle;
  answer("TESSEL_QM_CONNECT", completionCode, reason);
}
#endif

#ifndef QM_WITHOUT_DISCONNECT
__declspec(dllexport) void ZXDISC(std::int32_t* handle, long* completionCode, long* reason) {
  note("ZXDISC " + std::to_string(*handle));
  *handle = 0;
  answer("TESSEL_QM_DISCONNECT", completionCode, reason);
}
#endif

}  // extern "C"
