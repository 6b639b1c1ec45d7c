// Whether a text is JSON, by its grammar.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace tessel::test {

class JsonCheck {
 public:
  static bool holds(std::string_view text) {
    JsonCheck check(text);
    return check.value() && (check.blanks(), check.text_.empty());
  }

 private:
  explicit JsonCheck(std::string_view text) : text_(text) {}

  void blanks() { text_.remove_prefix(std::min(text_.find_first_not_of(" \t\r\n"), text_.size())); }

  bool take(std::string_view token) {
    blanks();
    if (!text_.starts_with(token)) return false;
    text_.remove_prefix(token.size());
    return true;
  }

  bool value() {
    if (take("{")) return members("}", true);
    if (take("[")) return members("]", false);
    if (take("\"")) return restOfString();
    return number();
  }

  bool members(std::string_view end, bool named) {
    if (take(end)) return true;
    do {
      if (named && !(take("\"") && restOfString() && take(":"))) return false;
      if (!value()) return false;
    } while (take(","));
    return take(end);
  }

  bool restOfString() {
    while (!text_.empty()) {
      const char c = text_.front();
      text_.remove_prefix(1);
      if (c == '"') return true;
      if (static_cast<unsigned char>(c) < ' ' || (c == '\\' && !escape())) return false;
    }
    return false;
  }

  bool escape() {
    if (text_.empty()) return false;
    const char c = text_.front();
    text_.remove_prefix(1);
    if (c != 'u') return std::string_view("\"\\/bfnrt").find(c) != std::string_view::npos;
    const bool four = text_.substr(0, 4).find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
    if (!four || text_.size() < 4) return false;
    text_.remove_prefix(4);
    return true;
  }

  // Integers are all that is written.
  bool number() {
    take("-");
    const std::size_t digits = std::min(text_.find_first_not_of("0123456789"), text_.size());
    text_.remove_prefix(digits);
    return digits > 0;
  }

  std::string_view text_;
};

}  // namespace tessel::test
