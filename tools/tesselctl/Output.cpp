#include "Output.h"

#include <stdexcept>

#include <tessel/NYXUtils.h>

#include "Text.h"
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

// A console shows every language, whatever its code page is.
bool show(DWORD stream, const std::string& text) {
  if (!isConsole(stream)) return write(stream, text);
  const std::wstring wide = wideText(textOfBytes(text));
  DWORD written = 0;
  return WriteConsoleW(GetStdHandle(stream), wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) != 0;
}

[[noreturn]] void failToWrite() {
  throw std::runtime_error("cannot write to standard output: " + tessel::NYXUtils::getLastErrorMessage());
}

}  // namespace

void printBytes(std::string_view bytes) {
  if (!write(STD_OUTPUT_HANDLE, bytes)) failToWrite();
}

void printText(std::string_view text) {
  if (!show(STD_OUTPUT_HANDLE, std::string(text))) failToWrite();
}

void printLine(const std::string& text) { printText(text + '\n'); }

void printNote(const std::string& text) { show(STD_ERROR_HANDLE, textOfLibrary(text)); }

void printError(const std::string& text) { printNote("tesselctl: " + text + '\n'); }

bool outputIsTerminal() { return isConsole(STD_OUTPUT_HANDLE); }

bool errorOutputIsTerminal() { return isConsole(STD_ERROR_HANDLE); }

}  // namespace tesselctl
