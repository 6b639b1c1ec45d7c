// A new folder that goes away with all its files.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace tessel::test {

class TempFolder {
 public:
  // The folder is made, not looked for: two processes can never get the same one.
  TempFolder() {
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    unsigned number = 0;
    do {
      path_ = parent / ("tessel-test-" + std::to_string(number++));
    } while (!std::filesystem::create_directory(path_));
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // Writes the bytes as they are, with all folders on the way.
  std::filesystem::path write(const std::filesystem::path& name, const std::string& bytes) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tessel::test
