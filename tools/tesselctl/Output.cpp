#include "Output.h"

#include <stdexcept>

#include <tessel/NYXUtils.h>

#include "internal/pc/Platform.h"

namespace tesselctl {
namespace {

bool write(DWORD stream, std::string_view text) {
  while (!text.empty()) {
    DWORD written = 0;
    if (!WriteFile(GetStdHandle(stream), text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) return false;
    text.remove_prefix(written);
  }
  return true;
}

// A console only: the null device calls itself a terminal, too, when the C library is asked.
bool isConsole(DWORD stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

}  // namespace

void printText(std::string_view text) {
  if (write(STD_OUTPUT_HANDLE, text)) return;
  throw std::runtime_error("cannot write to standard output: " + tessel::NYXUtils::getLastErrorMessage());
}

void printLine(const std::string& text) { printText(text + '\n'); }

void printNote(const std::string& text) { write(STD_ERROR_HANDLE, text); }

void printError(const std::string& text) { printNote("tesselctl: " + text + '\n'); }

bool outputIsTerminal() { return isConsole(STD_OUTPUT_HANDLE); }

bool errorOutputIsTerminal() { return isConsole(STD_ERROR_HANDLE); }

}  // namespace tesselctl
