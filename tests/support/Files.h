// Reading what was written.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tessel::test {

// The bytes as they are; empty when there is no such file.
inline std::string bytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The names in a folder, sorted.
inline std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// The lines of a text whose every line ends as Windows lines do; what follows the last end is a line, too.
inline std::vector<std::string> windowsLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2) {
    lines.push_back(text.substr(start, end - start));
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

}  // namespace tessel::test
