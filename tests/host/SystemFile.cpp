#include "internal/SystemFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tessel::internal {
namespace {

constexpr mode_t kMode = 0600;

int openFile(const std::string& path, int flags) { return ::open(path.c_str(), flags | O_CLOEXEC, kMode); }

int descriptorOf(std::intptr_t value) { return static_cast<int>(value); }

}  // namespace

bool fileExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

bool canAppend(const std::string& path) {
  const int file = openFile(path, O_WRONLY | O_APPEND);
  if (file >= 0) ::close(file);
  return file >= 0;
}

int lastByte(const std::string& path) {
  const int file = openFile(path, O_RDONLY);
  if (file < 0) return -1;
  unsigned char byte = 0;
  const bool read = ::lseek(file, -1, SEEK_END) >= 0 && ::read(file, &byte, 1) == 1;
  ::close(file);
  return read ? byte : -1;
}

Renamed renameFile(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) == 0) return Renamed::done;
  return errno == ENOENT ? Renamed::noSource : Renamed::failed;
}

bool removeFile(const std::string& path) { return ::unlink(path.c_str()) == 0; }

bool SystemFile::open(const std::string& path, FileContent content) {
  close();
  handle_ = openFile(path, O_WRONLY | O_CREAT | (content == FileContent::emptied ? O_TRUNC : 0));
  return isOpen();
}

void SystemFile::close() noexcept {
  if (isOpen()) ::close(descriptorOf(handle_));
  handle_ = kNone;
}

std::int64_t SystemFile::seekToEnd() { return ::lseek(descriptorOf(handle_), 0, SEEK_END); }

std::size_t SystemFile::write(const char* bytes, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t written = ::write(descriptorOf(handle_), bytes + done, size - done);
    if (written <= 0) break;
    done += static_cast<std::size_t>(written);
  }
  return done;
}

}  // namespace tessel::internal
