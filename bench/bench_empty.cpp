// What a DLL of ours loads without having anything to do: the run-time of C++ that is linked into it.
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>

extern "C" __declspec(dllexport) void bench_empty(int value) {
  static std::mutex mutex;
  const std::lock_guard guard(mutex);
  std::ostringstream text;
  text << value;
  std::cout << "a number: " + text.str() << '\n';
}
