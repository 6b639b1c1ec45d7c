#include "LineReader.h"

#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace tesselctl {
namespace {

[[noreturn]] void fail(const std::string& action, const std::string& name) {
  throw std::runtime_error("cannot " + action + " " + name + ": " + std::generic_category().message(errno));
}

}  // namespace

LineReader::LineReader(const std::string& path)
    : name_(path == "-" ? "standard input" : path), stream_(path == "-" ? std::cin : file_) {
  if (path == "-") return;
  file_.open(path, std::ios::binary | std::ios::ate);
  if (!file_) fail("open", name_);
  const std::streamoff size = file_.tellg();
  size_ = size > 0 ? static_cast<std::uint64_t>(size) : 0;
  file_.clear();
  file_.seekg(0);
}

bool LineReader::next(std::string& line) {
  errno = 0;
  if (!std::getline(stream_, line)) {
    if (stream_.bad()) fail("read", name_);
    return false;
  }
  ++lines_;
  bytes_ += line.size() + 1;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

std::string LineReader::place() const { return name_ + ":" + std::to_string(lines_); }

double LineReader::portion() const {
  if (size_ == 0) return -1;
  return bytes_ >= size_ ? 1 : static_cast<double>(bytes_) / static_cast<double>(size_);
}

}  // namespace tesselctl
