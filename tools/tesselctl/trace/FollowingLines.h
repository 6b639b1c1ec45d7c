// The lines since the last record. They belong to its text, unless a header shows that they end in a banner.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tesselctl::trace {

class FollowingLines {
 public:
  // The start of what a process writes when it opens its file.
  struct Banner {
    std::uint64_t linesBefore = 0;
    std::string_view lastLineBefore;  // when there is one
    std::string processId;
  };

  void add(std::string_view line);
  void clear() { *this = FollowingLines(); }

  std::uint64_t count() const { return count_; }
  // When there is one.
  std::string_view last() const { return recent_[0]; }
  // The last banner among the lines: one only if a header follows.
  const std::optional<Banner>& banner() const { return banner_; }

 private:
  std::uint64_t count_ = 0;
  std::array<std::string_view, 6> recent_;  // the newest first
  std::optional<Banner> banner_;
};

}  // namespace tesselctl::trace
