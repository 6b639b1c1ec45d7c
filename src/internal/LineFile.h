// A text file that grows line by line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "internal/SystemFile.h"

namespace tessel::internal {

// Lines end as Windows lines do, and each is handed to the system with one call. What fails leaves its reason in the
// thread's last error.
class LineFile {
 public:
  // Ready to write at the end.
  bool open(const std::string& path, FileContent content);
  void close() noexcept { file_.close(); }
  bool isOpen() const noexcept { return file_.isOpen(); }

  // Goes to the end of the open file. While the caller is alone nobody else writes to it: its end is known then,
  // unless a write has failed. Returns the size in bytes, negative on failure.
  std::int64_t size(bool alone);

  // Writes the text and a line end at the position where the last call left off. If only a part of it can be
  // written, as on a full disk, the next line starts by ending it.
  bool writeLine(std::string_view text);

 private:
  void prepare(std::string_view text);

  SystemFile file_;
  std::int64_t end_ = -1;    // negative while it is not known
  bool insideLine_ = false;  // what was written last is not the end of a line
  std::string line_;         // reused, so that a line costs no allocation
};

}  // namespace tessel::internal
