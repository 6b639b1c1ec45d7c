// The failure captures of the process while the object lives.
#pragma once

#include <string>
#include <vector>

#include "support/RecordingHandler.h"

namespace tessel::test {

// The non-empty lines of a text; a last line needs no line end.
inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

// Without a log directory each capture is announced with its whole record.
class Captures {
 public:
  // The record of each capture, line by line.
  std::vector<std::vector<std::string>> records() const {
    std::vector<std::vector<std::string>> records;
    for (const std::string& message : handler_.messages()) {
      const std::size_t start = message.find("Level:      ");
      if (start != std::string::npos) records.push_back(linesOf(message.substr(start)));
    }
    return records;
  }

  // The value behind a label such as "Cause:" in each record; empty where a record has no such line.
  std::vector<std::string> values(const std::string& label) const {
    constexpr std::size_t kValueColumn = 12;
    std::vector<std::string> values;
    for (const std::vector<std::string>& record : records()) {
      std::string value;
      for (const std::string& line : record) {
        if (line.compare(0, label.size(), label) == 0) value = line.substr(kValueColumn);
      }
      values.push_back(value);
    }
    return values;
  }

  std::vector<Recorded> announcements() const { return handler_.records(); }

 private:
  RecordingHandler handler_{"FFDC", LogLevel::SEVERE};
};

}  // namespace tessel::test
