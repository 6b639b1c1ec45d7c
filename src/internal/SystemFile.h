// Files as the system offers them. What fails leaves its reason in the thread's last error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tessel::internal {

bool fileExists(const std::string& path);

// Whether an existing file can be opened for writing at its end.
bool canAppend(const std::string& path);

// The last byte of a file; negative when it is empty or cannot be read.
int lastByte(const std::string& path);

enum class Renamed { done, noSource, failed };

// Takes the place of `to` in one step, so that a rename that fails has deleted nothing.
Renamed renameFile(const std::string& from, const std::string& to);

bool removeFile(const std::string& path);

enum class FileContent { kept, emptied };

// A file that is written at its end. Other processes may read and write it meanwhile.
class SystemFile {
 public:
  SystemFile() noexcept = default;
  ~SystemFile() { close(); }
  SystemFile(const SystemFile&) = delete;
  SystemFile& operator=(const SystemFile&) = delete;

  // Creates the file when it is missing.
  bool open(const std::string& path, FileContent content);
  void close() noexcept;
  bool isOpen() const noexcept { return handle_ != kNone; }

  // Returns the new position, negative on failure.
  std::int64_t seekToEnd();

  // Returns how many bytes were written: fewer on failure.
  std::size_t write(const char* bytes, std::size_t size);

 private:
  static constexpr std::intptr_t kNone = -1;

  std::intptr_t handle_ = kNone;
};

}  // namespace tessel::internal
