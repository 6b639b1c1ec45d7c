// A properties file against the same rules written down line by line.
#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

#include "internal/PropertiesText.h"

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string trimmed(std::string text) {
  while (!text.empty() && isBlank(text.back())) text.pop_back();
  while (!text.empty() && isBlank(text.front())) text.erase(0, 1);
  return text;
}

std::map<std::string, std::string> reference(const std::string& text) {
  std::map<std::string, std::string> entries;
  std::istringstream file(text);
  for (std::string line; std::getline(file, line);) {
    const std::size_t equals = line.find('=');
    if (line.substr(0, 1) == "#" || equals == std::string::npos) continue;
    const std::string key = trimmed(line.substr(0, equals));
    if (!key.empty() && entries.count(key) == 0) entries[key] = trimmed(line.substr(equals + 1));
  }
  return entries;
}

std::map<std::string, std::string> parsed(const std::string& text) {
  std::map<std::string, std::string> entries;
  const tessel::internal::PropertiesText file(text);
  for (const auto& entry : file.entries()) {
    const bool isNew = entries.emplace(entry.key, entry.value).second;
    if (!isNew || file.find(entry.key) != &entry) std::abort();
  }
  return entries;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  if (parsed(text) != reference(text)) std::abort();
  return 0;
}
