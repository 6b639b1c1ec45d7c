#include "internal/TraceSpecification.h"

#include <algorithm>

namespace tessel::internal {
namespace {

bool startsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

}  // namespace

std::vector<std::string> nonEmptyParts(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(separator, start), text.size());
    if (end > start) parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

std::string upperCase(const std::string& word) {
  std::string upper = word;
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

bool relativeName(const std::string& name, const std::string& prefix, std::string& key) {
  if (name.empty() || name == prefix || startsWith(prefix, name + ".")) {
    key.clear();
  } else if (startsWith(name, prefix + ".")) {
    key = name.substr(prefix.size() + 1);
  } else if (startsWith(name, prefix)) {
    key = name.substr(prefix.size());
  } else {
    return false;
  }
  return true;
}

}  // namespace tessel::internal
