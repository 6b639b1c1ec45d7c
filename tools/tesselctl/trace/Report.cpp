#include "Report.h"

#include <algorithm>
#include <array>

namespace tesselctl::trace {
namespace {

constexpr std::size_t kEnoughForOneWrite = 65536;
constexpr unsigned kFirstPrintable = 0x20;
constexpr unsigned kDelete = 0x7f;

unsigned byteAt(std::string_view text, std::size_t i) { return static_cast<unsigned char>(text[i]); }

void appendHex(std::string& out, std::uint64_t value, unsigned digits) {
  constexpr unsigned kBits = 4;
  for (unsigned i = digits; i-- > 0;) out += "0123456789abcdef"[(value >> (i * kBits)) & 0xf];
}

// The first byte of a character of so many bytes, the bits of the character in it, and the least character so long.
struct Lead {
  unsigned mask;
  unsigned mark;
  std::uint32_t least;
};

constexpr std::array<Lead, 3> kLeads{{{0xe0, 0xc0, 0x80}, {0xf0, 0xe0, 0x800}, {0xf8, 0xf0, 0x10000}}};

bool isCharacter(std::uint32_t code, std::uint32_t least) {
  return code >= least && code <= 0x10ffff && (code < 0xd800 || code > 0xdfff);
}

// U+0080 to U+009F.
bool isHighControl(std::string_view text) { return byteAt(text, 0) == 0xc2 && byteAt(text, 1) < 0xa0; }

void appendBytes(std::string& out, std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    out += "\\x";
    appendHex(out, byteAt(bytes, i), 2);
  }
}

// Number of characters at the start that both notations show as they are.
std::size_t plainLength(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && byteAt(text, i) >= kFirstPrintable && byteAt(text, i) < kDelete && text[i] != '"' &&
         text[i] != '\\' && text[i] != '<') {
    ++i;
  }
  return i;
}

// Bytes of the character at the start when a terminal may get it.
std::size_t printableLength(std::string_view text) {
  const std::size_t length = characterLength(text);
  const bool control = length == 1 && (byteAt(text, 0) < kFirstPrintable || byteAt(text, 0) == kDelete);
  if ((control && text.front() != '\t') || (length == 2 && isHighControl(text))) return 0;
  return length;
}

// The first byte of the text, which JSON does not show as it is.
void appendJsonByte(std::string& out, std::string_view text, bool isAscii) {
  const char c = text.front();
  if (!isAscii) {
    out += '\\';
    appendBytes(out, text.substr(0, 1));
  } else if (c == '"' || c == '\\') {
    out += '\\';
    out += c;
  } else if (c == '\n') {
    out += "\\n";
  } else if (!text.starts_with("\r\n")) {
    out += "\\u";
    appendHex(out, byteAt(text, 0), 4);
  }
}

}  // namespace

void ReportBuffer::piece() {
  if (text_.size() >= kEnoughForOneWrite) finish();
}

void ReportBuffer::finish() {
  if (!text_.empty()) sink_(text_);
  text_.clear();
}

std::size_t characterLength(std::string_view text) {
  if (text.empty()) return 0;
  const unsigned first = byteAt(text, 0);
  if (first < 0x80) return 1;
  for (std::size_t following = 1; following <= kLeads.size(); ++following) {
    const Lead& lead = kLeads[following - 1];
    if ((first & lead.mask) != lead.mark) continue;
    if (text.size() <= following) return 0;
    std::uint32_t code = first & ~lead.mask;
    for (std::size_t i = 1; i <= following; ++i) {
      if ((byteAt(text, i) & 0xc0) != 0x80) return 0;
      code = code << 6 | (byteAt(text, i) & 0x3f);
    }
    return isCharacter(code, lead.least) ? following + 1 : 0;
  }
  return 0;
}

void appendPlain(std::string& out, std::string_view line) {
  while (!line.empty()) {
    std::size_t length = std::max(plainLength(line), printableLength(line));
    if (length > 0) {
      out += line.substr(0, length);
    } else {
      length = std::max<std::size_t>(characterLength(line), 1);
      appendBytes(out, line.substr(0, length));
    }
    line.remove_prefix(length);
  }
}

void appendJson(std::string& out, std::string_view text) {
  while (!text.empty()) {
    const std::size_t character = characterLength(text);
    std::size_t length = plainLength(text);
    if (length == 0 && character > 1) length = character;
    if (length > 0) {
      out += text.substr(0, length);
    } else {
      length = 1;
      appendJsonByte(out, text, character == 1);
    }
    text.remove_prefix(length);
  }
}

void appendJsonString(std::string& out, std::string_view text) {
  out += '"';
  appendJson(out, text);
  out += '"';
}

std::string threadText(std::uint32_t thread) {
  std::string text;
  appendHex(text, thread, 16);
  return text;
}

std::string objectText(std::uint64_t object) {
  if (object == 0) return {};
  std::string digits;
  appendHex(digits, object, 16);
  return digits.substr(digits.find_first_not_of('0'));
}

std::string processText(const ProcessTrace& process) {
  return (process.processId.empty() ? "a process" : "process " + process.processId) + " of " + process.files;
}

std::string_view shortClassName(std::string_view name) { return name.substr(name.rfind('.') + 1); }

}  // namespace tesselctl::trace
