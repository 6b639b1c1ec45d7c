#include "FollowingLines.h"

#include <algorithm>

namespace tesselctl::trace {
namespace {

// Titles without a text in any catalogue: they show as their keys whatever the language is.
constexpr std::string_view kBuildLevel = "BUILD_LEVEL";
constexpr std::string_view kProperties = "PROPERTIES";

// Date, an empty line, process id, an empty line, build level.
constexpr std::uint64_t kLinesAbove = 5;
constexpr std::size_t kProcessIdLine = 2;

std::string lastNumber(std::string_view line) {
  constexpr std::string_view kDigits = "0123456789";
  const std::size_t end = line.find_last_of(kDigits) + 1;
  if (end == 0) return {};
  const std::size_t before = line.find_last_not_of(kDigits, end - 1);
  const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
  return std::string(line.substr(begin, end - begin));
}

}  // namespace

void FollowingLines::add(std::string_view line) {
  if (line == kProperties && count_ > 0 && last().starts_with(kBuildLevel)) {
    const std::uint64_t before = count_ > kLinesAbove ? count_ - kLinesAbove : 0;
    banner_ = Banner{before, recent_.back(), lastNumber(recent_[kProcessIdLine])};
  }
  std::copy_backward(recent_.begin(), recent_.end() - 1, recent_.end());
  recent_[0] = line;
  ++count_;
}

}  // namespace tesselctl::trace
