#include "TraceLine.h"

#include <algorithm>
#include <cstddef>

namespace tesselctl::trace {
namespace {

using std::string_view;

constexpr std::size_t kClassWidth = 70;
constexpr std::size_t kIdDigits = 16;
constexpr std::uint64_t kDecimal = 10;
constexpr std::uint64_t kHexadecimal = 16;
constexpr string_view kStatic = "           static";
constexpr string_view kMissingExit = "*** Missing Trace::Exit ";
constexpr string_view kMissingEntry = "*** Missing Trace::Entry ";
constexpr string_view kMarkEnd = " *** ";

std::uint64_t digitOf(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint64_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<std::uint64_t>(c - 'a') + kDecimal;
  if (c >= 'A' && c <= 'F') return static_cast<std::uint64_t>(c - 'A') + kDecimal;
  return kHexadecimal;
}

// Takes what is expected off the front of a line.
class Cursor {
 public:
  explicit Cursor(string_view line) : rest_(line) {}

  string_view rest() const { return rest_; }

  bool literal(string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  bool number(std::uint64_t base, std::size_t least, std::size_t most, std::uint64_t& value) {
    std::size_t count = 0;
    value = 0;
    for (; count < most && count < rest_.size() && digitOf(rest_[count]) < base; ++count) {
      value = value * base + digitOf(rest_[count]);
    }
    rest_.remove_prefix(count);
    return count >= least;
  }

  bool column(std::size_t width, string_view& text) {
    if (rest_.size() < width) return false;
    text = rest_.substr(0, width);
    rest_.remove_prefix(width);
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    return true;
  }

  std::size_t skip(char c) {
    const std::size_t count = std::min(rest_.find_first_not_of(c), rest_.size());
    rest_.remove_prefix(count);
    return count;
  }

 private:
  string_view rest_;
};

bool parseStamp(Cursor& cursor, TraceRecord& record) {
  constexpr std::uint64_t kSixty = 60;
  constexpr std::uint64_t kPerUnit = 256;
  const string_view start = cursor.rest();
  std::uint64_t hour = 0;
  std::uint64_t minute = 0;
  std::uint64_t second = 0;
  std::uint64_t high = 0;
  std::uint64_t low = 0;
  if (!cursor.number(kDecimal, 2, 2, hour) || !cursor.literal(":") || !cursor.number(kDecimal, 2, 2, minute) ||
      !cursor.literal(":") || !cursor.number(kDecimal, 2, 2, second) || !cursor.literal(".") ||
      !cursor.number(kDecimal, 3, 8, high) || !cursor.literal(".") || !cursor.number(kHexadecimal, 2, 2, low)) {
    return false;
  }
  record.time = start.substr(0, start.size() - cursor.rest().size());
  record.second = static_cast<std::uint32_t>((hour * kSixty + minute) * kSixty + second);
  record.number = static_cast<std::uint32_t>(high * kPerUnit + low);
  return hour < 24 && minute < kSixty && second <= kSixty;
}

// Thread numbers have 32 bits, though they are written with more digits.
bool parseThread(Cursor& cursor, TraceRecord& record) {
  std::uint64_t thread = 0;
  if (!cursor.number(kHexadecimal, kIdDigits, kIdDigits, thread) || thread > UINT32_MAX) return false;
  record.thread = static_cast<std::uint32_t>(thread);
  return true;
}

bool parseObject(Cursor& cursor, TraceRecord& record) {
  if (cursor.literal(kStatic)) return true;
  return cursor.literal("@") && cursor.number(kHexadecimal, kIdDigits, kIdDigits, record.object);
}

// The marks of the indentation, every fifth a plus. False when it is none.
bool parseDepth(Cursor& cursor, TraceRecord& record) {
  constexpr std::uint32_t kMark = 5;
  const string_view marks = cursor.rest().substr(0, cursor.rest().find_first_not_of("-+"));
  for (std::size_t i = 0; i < marks.size(); ++i) {
    if (marks[i] != ((i + 1) % kMark == 0 ? '+' : '-')) return false;
  }
  cursor.literal(marks);
  record.depth = static_cast<std::uint32_t>(marks.size()) + 1;
  // A single blank in front of the brace: the line of a method without a name is not indented.
  return cursor.skip(' ') >= 2;
}

bool parseKind(Cursor& cursor, TraceRecord& record) {
  if (cursor.literal("{ ")) {
    record.kind = RecordKind::entry;
  } else if (cursor.literal("} ")) {
    record.kind = RecordKind::exit;
  } else if (cursor.literal("d ")) {
    record.kind = RecordKind::data;
  } else if (cursor.literal("! ")) {
    record.kind = RecordKind::throwing;
  } else {
    return false;
  }
  cursor.skip(' ');
  return true;
}

// What stands between the method's name and the text; `kept` characters of it belong to the text.
struct Separator {
  string_view text;
  std::size_t kept;
};

Separator separatorOf(RecordKind kind) {
  switch (kind) {
    case RecordKind::entry:
      return {" [", 1};
    case RecordKind::exit:
      return {" returns [", sizeof("returns [") - 1};
    case RecordKind::data:
      return {" data ", 0};
    default:
      return {", ", 0};
  }
}

bool parseMethod(string_view rest, TraceRecord& record) {
  const Separator separator = separatorOf(record.kind);
  const std::size_t at = rest.find(separator.text);
  record.method = rest.substr(0, at);
  record.text =
      at == string_view::npos ? rest.substr(rest.size()) : rest.substr(at + separator.text.size() - separator.kept);
  record.method = record.method.substr(0, record.method.find_last_not_of(' ') + 1);
  return !record.method.empty();
}

// The trace's own remark on an exit that does not fit.
bool parseRemark(Cursor& cursor, TraceRecord& record) {
  const string_view message = cursor.rest();
  record.withoutEntry = message.starts_with(kMissingEntry);
  if (!record.withoutEntry && !message.starts_with(kMissingExit)) return true;
  const std::size_t end = message.find(kMarkEnd, kMissingExit.size());
  return end != string_view::npos && cursor.literal(message.substr(0, end + kMarkEnd.size()));
}

bool parseMessage(string_view message, TraceRecord& record) {
  Cursor cursor(message);
  return parseRemark(cursor, record) && parseDepth(cursor, record) && parseKind(cursor, record) &&
         parseMethod(cursor.rest(), record);
}

}  // namespace

bool startsRecord(string_view line) {
  Cursor cursor(line);
  std::uint64_t number = 0;
  for (const char* end : {":", ":", "."}) {
    if (!cursor.number(kDecimal, 2, 2, number) || !cursor.literal(end)) return false;
  }
  return cursor.number(kDecimal, 3, 8, number) && cursor.literal(".");
}

std::optional<TraceRecord> parseRecord(string_view line) {
  TraceRecord record;
  Cursor cursor(line);
  if (!parseStamp(cursor, record) || !cursor.literal("  ") || !parseThread(cursor, record) || !cursor.literal(" ") ||
      !parseObject(cursor, record) || !cursor.literal(" ") || !cursor.column(kClassWidth, record.className) ||
      !cursor.literal(" ")) {
    return std::nullopt;
  }
  if (!parseMessage(cursor.rest(), record)) {
    record.kind = RecordKind::other;
    record.withoutEntry = false;
    record.depth = 0;
    record.method = {};
    record.text = cursor.rest();
  }
  return record;
}

}  // namespace tesselctl::trace
