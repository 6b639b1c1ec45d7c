// A catalogue file against the same rules written down line by line.
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "internal/CatalogueFile.h"

namespace {

using tessel::internal::Messages;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::string line;
  for (const char c : text) {
    if (c == '\n') {
      lines.push_back(line);
      line.clear();
    } else {
      line += c;
    }
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// Nothing when a continuation stands at the end of the file: reading such a file never ends, on purpose.
std::optional<Messages> reference(const std::string& text) {
  const std::vector<std::string> lines = linesOf(text);
  Messages messages;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    if (line.substr(0, 3) != "KTB" || contains(line, ".useraction=") || contains(line, ".explanation=")) continue;
    const std::size_t equals = line.find('=');
    std::string value = equals == std::string::npos ? line : line.substr(equals + 1);
    while (!value.empty() && value.back() == '\\') {
      if (++i == lines.size()) return std::nullopt;
      const std::size_t backslash = value.find('\\');
      const std::size_t covered = backslash + lines[i].size();
      value = value.substr(0, backslash) + lines[i] + (covered < value.size() ? value.substr(covered) : "");
    }
    messages.emplace(line.substr(0, equals), value);
  }
  return messages;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const std::optional<Messages> expected = reference(text);
  if (!expected) return 0;
  std::istringstream file(text);
  if (tessel::internal::readCatalogue(file) != *expected) std::abort();
  return 0;
}
