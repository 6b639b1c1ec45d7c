// C++ sources as the gates read them: without comments, call by call.
#pragma once

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessel::host {

namespace fs = std::filesystem;

inline const fs::path kSourceTree = TESSEL_SOURCE_DIR;

inline std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  file.exceptions(std::ios::badbit | std::ios::failbit);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Every C++ file below the folders of the source tree, in a fixed order.
inline std::vector<fs::path> sourceFiles(const std::vector<std::string>& folders) {
  std::vector<fs::path> files;
  for (const std::string& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(kSourceTree / folder)) {
      const std::string extension = entry.path().extension();
      if (extension == ".h" || extension == ".cpp") files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

inline std::string shown(const fs::path& file, const std::string& text, std::size_t at) {
  const auto line = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n') + 1;
  return fs::relative(file, kSourceTree).string() + ":" + std::to_string(line);
}

// The end of the string or character literal that starts at `at`.
inline std::size_t literalEnd(std::string_view text, std::size_t at) {
  const char quote = text[at];
  for (std::size_t i = at + 1; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == quote) {
      return i + 1;
    }
  }
  return text.size();
}

// A quote between two letters or digits separates digits.
inline bool startsLiteral(std::string_view text, std::size_t at) {
  if (text[at] == '"') return true;
  return text[at] == '\'' && (at == 0 || std::isalnum(static_cast<unsigned char>(text[at - 1])) == 0);
}

// Comments become blanks; lines stay where they are. The sources have no raw strings.
inline std::string withoutComments(std::string text) {
  const auto blank = [&text](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < std::min(to, text.size()); ++i) {
      if (text[i] != '\n') text[i] = ' ';
    }
    return to;
  };
  for (std::size_t i = 0; i < text.size();) {
    if (startsLiteral(text, i)) {
      i = literalEnd(text, i);
    } else if (text.compare(i, 2, "//") == 0) {
      i = blank(i, std::min(text.find('\n', i), text.size()));
    } else if (text.compare(i, 2, "/*") == 0) {
      const std::size_t end = text.find("*/", i + 2);
      i = blank(i, end == std::string::npos ? text.size() : end + 2);
    } else {
      ++i;
    }
  }
  return text;
}

inline std::string trimmed(std::string text) {
  const auto isSpace = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isSpace));
  while (!text.empty() && isSpace(text.back())) text.pop_back();
  return text;
}

struct Call {
  std::string callee;  // the name alone, without qualifiers and template arguments
  bool templated;      // whether template arguments stand behind the name
  std::vector<std::string> arguments;
  std::size_t argument;  // the one that was asked about
};

// The name that ends before `end`, behind it perhaps template arguments.
inline std::string nameBefore(std::string_view text, std::size_t end) {
  const auto isName = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
  if (end > 0 && text[end - 1] == '>') {
    for (int depth = 0; end > 0; --end) {
      if (text[end - 1] == '>') ++depth;
      if (text[end - 1] == '<' && --depth == 0) break;
    }
    --end;
  }
  std::size_t start = end;
  while (start > 0 && isName(text[start - 1])) --start;
  return std::string(text.substr(start, end - start));
}

// The brackets that are open at `at`, innermost last.
inline std::vector<std::size_t> openBrackets(std::string_view text, std::size_t at) {
  std::vector<std::size_t> open;
  for (std::size_t i = 0; i < at;) {
    if (startsLiteral(text, i)) {
      i = literalEnd(text, i);
      continue;
    }
    if (std::string_view("([{").find(text[i]) != std::string_view::npos) open.push_back(i);
    if (std::string_view(")]}").find(text[i]) != std::string_view::npos && !open.empty()) open.pop_back();
    ++i;
  }
  return open;
}

// The call in whose arguments `at` stands; nothing when the innermost bracket is not one of a call. The text has no
// comments.
inline std::optional<Call> enclosingCall(std::string_view text, std::size_t at) {
  const std::vector<std::size_t> open = openBrackets(text, at);
  if (open.empty() || text[open.back()] != '(') return std::nullopt;
  Call call{nameBefore(text, open.back()), open.back() > 0 && text[open.back() - 1] == '>', {}, 0};
  if (call.callee.empty()) return std::nullopt;
  std::size_t start = open.back() + 1;
  int depth = 0;
  const auto take = [&](std::size_t end) {
    if (start <= at && at < end) call.argument = call.arguments.size();
    call.arguments.push_back(trimmed(std::string(text.substr(start, end - start))));
    start = end + 1;
  };
  for (std::size_t i = start; i < text.size();) {
    if (startsLiteral(text, i)) {
      i = literalEnd(text, i);
      continue;
    }
    if (std::string_view("([{").find(text[i]) != std::string_view::npos) ++depth;
    if (text[i] == ',' && depth == 0) take(i);
    if (std::string_view(")]}").find(text[i]) != std::string_view::npos && depth-- == 0) {
      take(i);
      return call;
    }
    ++i;
  }
  return std::nullopt;
}

}  // namespace tessel::host
