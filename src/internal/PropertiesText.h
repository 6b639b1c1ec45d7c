// The format of a properties file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessel::internal {

// The text of a properties file and the entries in it, in key order. The entries lie in the text: loading a large
// file takes one pass and one sort, and allocates nothing for each entry.
class PropertiesText {
 public:
  struct Entry {
    std::string_view key;
    std::string_view value;
    std::uint64_t rank;  // orders like the key as far as it tells
  };

  // The first entry of a key wins.
  explicit PropertiesText(std::string text);
  PropertiesText(const PropertiesText&) = delete;
  PropertiesText& operator=(const PropertiesText&) = delete;

  const std::vector<Entry>& entries() const { return entries_; }

  // Null when there is no such key.
  const Entry* find(std::string_view key) const;

 private:
  void readLines();
  void addLine(std::string_view line);
  void sort();

  std::string text_;
  std::vector<Entry> entries_;
};

}  // namespace tessel::internal
