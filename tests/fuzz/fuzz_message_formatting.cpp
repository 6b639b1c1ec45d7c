// Filling a message text against the same rules written down naively.
//
// The input is the text, then the inserts, separated by zero bytes. An insert of the one byte 1 is a missing one.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "internal/MessageText.h"

namespace {

using tessel::internal::Filled;
using tessel::internal::Match;
using Inserts = std::vector<const std::string*>;

constexpr std::size_t kMaxInserts = 16;

std::vector<std::string> parts(const std::string& input) {
  std::vector<std::string> result(1);
  for (const char c : input) {
    if (c == '\0') {
      result.emplace_back();
    } else {
      result.back() += c;
    }
  }
  return result;
}

std::string collapsed(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    result += text[i];
    if (text[i] == '\'' && i + 1 < text.size() && text[i + 1] == '\'') ++i;
  }
  return result;
}

Filled fill(std::string& text, const Inserts& inserts) {
  int used = 0;
  for (const std::string* insert : inserts) {
    const std::size_t at = text.find(std::string("{") + static_cast<char>('0' + used) + "}");
    if (at == std::string::npos || !insert) return {Match::insertsLeft, used};
    text = text.substr(0, at) + *insert + text.substr(at + 3);
    ++used;
  }
  const bool more = text.find(std::string("{") + static_cast<char>('0' + used) + "}") != std::string::npos;
  return {more ? Match::insertsMissing : Match::complete, used};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::string> given = parts(std::string(data, data + size));
  Inserts inserts;
  for (std::size_t i = 1; i < given.size() && inserts.size() < kMaxInserts; ++i) {
    inserts.push_back(given[i] == "\x01" ? nullptr : &given[i]);
  }

  std::string text = given.front();
  tessel::internal::collapseApostrophes(text);
  std::string expected = collapsed(given.front());
  if (text != expected) std::abort();

  const Filled filled = tessel::internal::fillPlaceholders(text, inserts.data(), static_cast<int>(inserts.size()));
  const Filled wanted = fill(expected, inserts);
  if (text != expected || filled.match != wanted.match || filled.used != wanted.used) std::abort();
  return 0;
}
