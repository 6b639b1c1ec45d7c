#include "internal/LineFile.h"

#include "internal/ContainsByte.h"

namespace tessel::internal {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
// A buffer that one long line has made larger is given back.
constexpr std::size_t kKept = 65536;

// Line ends inside the text are those of the program.
void appendWithLineEnds(std::string& line, std::string_view text) {
  if (!containsByte(text, '\n')) {
    line += text;
    return;
  }
  for (;;) {
    const std::size_t end = text.find('\n');
    line += text.substr(0, end);
    if (end == std::string_view::npos) return;
    const bool complete = end > 0 && text[end - 1] == '\r';
    line += complete ? "\n" : kLineEnd;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

bool LineFile::open(const std::string& path, FileContent content) {
  if (!file_.open(path, content)) return false;
  end_ = file_.seekToEnd();
  if (end_ < 0) {
    file_.close();
    return false;
  }
  // A process that was killed, or for which the disk was full, has left a part of a line.
  const int last = end_ > 0 ? lastByte(path) : -1;
  insideLine_ = last >= 0 && last != '\n';
  return true;
}

std::int64_t LineFile::size(bool alone) {
  if (!alone || end_ < 0) end_ = file_.seekToEnd();
  return end_;
}

void LineFile::prepare(std::string_view text) {
  line_.clear();
  if (insideLine_) line_ += kLineEnd;
  appendWithLineEnds(line_, text);
  line_ += kLineEnd;
}

bool LineFile::writeLine(std::string_view text) {
  prepare(text);
  const std::size_t written = file_.write(line_.data(), line_.size());
  const bool complete = written == line_.size();
  if (written > 0) insideLine_ = line_[written - 1] != '\n';
  end_ = complete && end_ >= 0 ? end_ + static_cast<std::int64_t>(written) : -1;
  if (line_.capacity() > kKept) std::string().swap(line_);
  return complete;
}

}  // namespace tessel::internal
