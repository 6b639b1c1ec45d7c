#include "internal/PropertiesText.h"

namespace tessel::internal {
namespace {

constexpr std::string_view kBlank = " \t\n\r";

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

void addLine(std::map<std::string, std::string>& entries, std::string_view line) {
  if (line.empty() || line.front() == '#') return;
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return;
  const std::string_view key = trim(line.substr(0, equals));
  if (key.empty()) return;
  // Files are mostly written in key order: then the hint makes the insertion cheap.
  entries.try_emplace(entries.end(), std::string(key), trim(line.substr(equals + 1)));
}

}  // namespace

std::map<std::string, std::string> parseProperties(std::string_view text) {
  std::map<std::string, std::string> entries;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    addLine(entries, text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return entries;
}

}  // namespace tessel::internal
