// The lines of a file or of standard input.
#pragma once

#include <cstdint>
#include <fstream>
#include <istream>
#include <string>

namespace tesselctl {

class LineReader {
 public:
  // "-" is standard input. Throws std::runtime_error when the file cannot be opened.
  explicit LineReader(const std::string& path);

  // Reads the next line without its line end, LF or CR LF; false at the end. Throws std::runtime_error.
  bool next(std::string& line);

  // Of the line read last: "file:12".
  std::string place() const;

  std::uint64_t lineNumber() const { return lines_; }

  // The part read so far, from 0 to 1; negative when the size is not known.
  double portion() const;

 private:
  std::string name_;
  std::ifstream file_;
  std::istream& stream_;
  std::uint64_t size_ = 0;  // 0 when not known
  std::uint64_t bytes_ = 0;
  std::uint64_t lines_ = 0;
};

}  // namespace tesselctl
