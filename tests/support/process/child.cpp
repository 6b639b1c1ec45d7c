// A child process for tests. The first argument says what it does; without one that it knows it prints its command
// line and its arguments, each byte as two digits, one line each.
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

using Arguments = std::vector<std::string>;

bool write(DWORD stream, const char* data, std::size_t size) {
  while (size > 0) {
    DWORD written = 0;
    if (!WriteFile(GetStdHandle(stream), data, static_cast<DWORD>(size), &written, nullptr)) return false;
    data += written;
    size -= written;
  }
  return true;
}

bool write(DWORD stream, const std::string& text) { return write(stream, text.data(), text.size()); }

std::string digits(const std::string& bytes) {
  std::string text;
  std::array<char, 3> pair{};
  for (const char byte : bytes) {
    std::snprintf(pair.data(), pair.size(), "%02x", static_cast<unsigned char>(byte));
    text += pair.data();
  }
  return text + '\n';
}

int printArguments(int argc, char** argv) {
  std::string text = digits(GetCommandLineA());
  for (int i = 1; i < argc; ++i) text += digits(argv[i]);
  return write(STD_OUTPUT_HANDLE, text) ? 0 : 1;
}

int readInput(bool echo) {
  std::array<char, 4096> block{};
  DWORD length = 0;
  while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), block.data(), static_cast<DWORD>(block.size()), &length, nullptr) &&
         length > 0) {
    if (echo && !write(STD_OUTPUT_HANDLE, block.data(), length)) return 1;
  }
  return 0;
}

struct Output {
  DWORD stream;
  std::size_t bytes;
};

// The alphabet over and over.
DWORD WINAPI writeAlphabet(void* argument) {
  const Output& output = *static_cast<Output*>(argument);
  std::string block;
  while (block.size() < 60000) block += "abcdefghijklmnopqrstuvwxyz";
  for (std::size_t left = output.bytes; left > 0;) {
    const std::size_t size = std::min(left, block.size());
    if (!write(output.stream, block.data(), size)) return 1;
    left -= size;
  }
  return 0;
}

int writeMuch(const Arguments& arguments) {
  const auto bytes = static_cast<std::size_t>(std::stoull(arguments.at(1)));
  Output output{STD_OUTPUT_HANDLE, bytes};
  Output error{STD_ERROR_HANDLE, bytes};
  if (arguments.at(0) == "out") return static_cast<int>(writeAlphabet(&output));
  if (arguments.at(0) == "err") return static_cast<int>(writeAlphabet(&error));
  const HANDLE other = CreateThread(nullptr, 0, writeAlphabet, &error, 0, nullptr);
  DWORD result = writeAlphabet(&output);
  WaitForSingleObject(other, INFINITE);
  DWORD otherResult = 1;
  GetExitCodeThread(other, &otherResult);
  return static_cast<int>(result | otherResult);
}

// Starts this program with other arguments; the new process inherits the streams.
bool startGrandchild(const std::string& arguments) {
  std::array<char, MAX_PATH> program{};
  GetModuleFileNameA(nullptr, program.data(), MAX_PATH);
  std::string commandLine = std::string("\"") + program.data() + "\" " + arguments;
  STARTUPINFOA start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  return CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process) !=
         0;
}

int closeStreams() {
  CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
  CloseHandle(GetStdHandle(STD_ERROR_HANDLE));
  readInput(false);
  return 3;
}

// Holds the streams until the event is set; one that floods writes all the while. With a second argument what it says
// is a line.
int hold(const Arguments& arguments, bool flood) {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, arguments.at(0).c_str());
  write(STD_OUTPUT_HANDLE, arguments.size() > 1 ? "grandchild\n" : "grandchild");
  const std::string block(4000, 'x');
  while (WaitForSingleObject(event, flood ? 0 : INFINITE) == WAIT_TIMEOUT) {
    if (!write(STD_OUTPUT_HANDLE, block)) return 1;
  }
  return 0;
}

int setEvent(const std::string& name) {
  const HANDLE event = OpenEventA(EVENT_MODIFY_STATE, FALSE, name.c_str());
  return event && SetEvent(event) ? 0 : 1;
}

int leaveGrandchild(const Arguments& arguments) {
  if (!startGrandchild(arguments.at(0) + ' ' + arguments.at(1))) return 1;
  if (arguments.size() > 2) Sleep(INFINITE);
  return 5;
}

int printDirectory() {
  std::array<char, MAX_PATH> folder{};
  GetCurrentDirectoryA(MAX_PATH, folder.data());
  return write(STD_OUTPUT_HANDLE, folder.data()) ? 0 : 1;
}

int crash() {
  SetErrorMode(SEM_NOGPFAULTERRORBOX);
  RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
  return 0;
}

int sayAndSleep(const Arguments& arguments) {
  write(STD_OUTPUT_HANDLE, arguments.empty() ? "ready" : arguments[0]);
  Sleep(INFINITE);
  return 0;
}

// The bytes that the digits stand for, two each.
int writeBytes(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  }
  return write(STD_OUTPUT_HANDLE, bytes) ? 0 : 1;
}

// Ends with the exit code behind both texts, if there is one.
int say(const Arguments& arguments) {
  if (!write(STD_OUTPUT_HANDLE, arguments.at(0)) || !write(STD_ERROR_HANDLE, arguments.at(1))) return 1;
  return arguments.size() > 2 ? std::stoi(arguments[2]) : 0;
}

using Task = int (*)(const Arguments&);

const std::map<std::string, Task>& tasks() {
  static const std::map<std::string, Task> all{
      {"do-exit", [](const Arguments& a) { return static_cast<int>(std::stoul(a.at(0))); }},
      {"do-write", writeMuch},
      {"do-echo", [](const Arguments&) { return readInput(true); }},
      {"do-sleep", sayAndSleep},
      {"do-close-streams", [](const Arguments&) { return closeStreams(); }},
      {"do-hold", [](const Arguments& a) { return hold(a, false); }},
      {"do-flood", [](const Arguments& a) { return hold(a, true); }},
      {"do-leave", leaveGrandchild},
      {"do-crash", [](const Arguments&) { return crash(); }},
      {"do-print-directory", [](const Arguments&) { return printDirectory(); }},
      {"do-write-bytes", [](const Arguments& a) { return writeBytes(a.at(0)); }},
      {"do-set", [](const Arguments& a) { return setEvent(a.at(0)); }},
      {"do-zero", [](const Arguments&) { return write(STD_OUTPUT_HANDLE, std::string("ab\0cd", 5)) ? 0 : 1; }},
      {"do-say", say},
  };
  return all;
}

}  // namespace

int main(int argc, char** argv) {
  const auto task = argc > 1 ? tasks().find(argv[1]) : tasks().end();
  if (task == tasks().end()) return printArguments(argc, argv);
  return task->second(Arguments(argv + 2, argv + argc));
}
