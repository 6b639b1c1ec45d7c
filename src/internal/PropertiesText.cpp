#include "internal/PropertiesText.h"

#include <algorithm>
#include <utility>

namespace tessel::internal {
namespace {

using Entry = PropertiesText::Entry;

constexpr std::string_view kBlank = " \t\n\r";

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

// Keys share long beginnings, and comparing them goes back to the text: most comparisons are decided by the eight
// bytes behind the common beginning instead.
std::size_t commonPrefix(const std::vector<Entry>& entries) {
  std::string_view prefix = entries.empty() ? std::string_view() : entries.front().key;
  for (const Entry& entry : entries) {
    const auto end = std::mismatch(prefix.begin(), prefix.end(), entry.key.begin(), entry.key.end()).first;
    prefix = prefix.substr(0, static_cast<std::size_t>(end - prefix.begin()));
  }
  return prefix.size();
}

std::uint64_t rankOf(std::string_view key) {
  constexpr std::size_t kBytes = 8;
  std::uint64_t rank = 0;
  for (std::size_t i = 0; i < kBytes; ++i)
    rank = rank << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
  return rank;
}

// By key; of equal keys the one that stands first in the text.
bool isBefore(const Entry& left, const Entry& right) {
  if (left.rank != right.rank) return left.rank < right.rank;
  const int order = left.key.compare(right.key);
  return order != 0 ? order < 0 : left.key.data() < right.key.data();
}

}  // namespace

PropertiesText::PropertiesText(std::string text) : text_(std::move(text)) {
  readLines();
  sort();
}

void PropertiesText::readLines() {
  for (std::string_view rest = text_; !rest.empty();) {
    const std::size_t end = rest.find('\n');
    addLine(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
}

void PropertiesText::addLine(std::string_view line) {
  if (line.empty() || line.front() == '#') return;
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return;
  const std::string_view key = trim(line.substr(0, equals));
  if (!key.empty()) entries_.push_back({key, trim(line.substr(equals + 1)), 0});
}

void PropertiesText::sort() {
  const std::size_t prefix = commonPrefix(entries_);
  for (Entry& entry : entries_) entry.rank = rankOf(entry.key.substr(prefix));
  if (!std::is_sorted(entries_.begin(), entries_.end(), isBefore)) {
    std::sort(entries_.begin(), entries_.end(), isBefore);
  }
  const auto sameKey = [](const Entry& left, const Entry& right) {
    return left.rank == right.rank && left.key == right.key;
  };
  entries_.erase(std::unique(entries_.begin(), entries_.end(), sameKey), entries_.end());
}

const Entry* PropertiesText::find(std::string_view key) const {
  const auto isLess = [](const Entry& entry, std::string_view wanted) { return entry.key < wanted; };
  const auto entry = std::lower_bound(entries_.begin(), entries_.end(), key, isLess);
  return entry == entries_.end() || entry->key != key ? nullptr : &*entry;
}

}  // namespace tessel::internal
