// A file of a benchmark, in the folder of temporary files.
#pragma once

#include <filesystem>
#include <string>

#include "internal/pc/Platform.h"

namespace bench {

// Lies in a folder of its own, which goes with it.
class TempFile {
 public:
  explicit TempFile(const std::string& name)
      : folder_(std::filesystem::temp_directory_path() / ("tessel-bench-" + std::to_string(GetCurrentProcessId()))),
        path_((folder_ / name).string()) {
    std::filesystem::create_directories(folder_);
  }
  ~TempFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::filesystem::path folder_;
  std::string path_;
};

}  // namespace bench
