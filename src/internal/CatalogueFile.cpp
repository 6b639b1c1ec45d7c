#include "internal/CatalogueFile.h"

#include <algorithm>
#include <array>
#include <istream>

#include "internal/ContainsByte.h"

namespace tessel::internal {
namespace {

struct Language {
  const char* prefix;
  const char* suffix;
};

// The first match decides.
constexpr std::array<Language, 16> kLanguages{{{"cs", "_cs.properties"},
                                               {"de", "_de.properties"},
                                               {"en", ".properties"},
                                               {"es", "_es.properties"},
                                               {"fr", "_fr.properties"},
                                               {"hu", "_hu.properties"},
                                               {"it", "_it.properties"},
                                               {"ja", "_ja.properties"},
                                               {"ko", "_ko.properties"},
                                               {"pl", "_pl.properties"},
                                               {"pt", "_pt_BR.properties"},
                                               {"ru", "_ru.properties"},
                                               {"zh_tw", "_zh_TW.properties"},
                                               {"zh-tw", "_zh_TW.properties"},
                                               {"zh", "_zh_CN.properties"},
                                               {"", ".properties"}}};

// What holds ".explanation=" or ".useraction=" anywhere is no message.
bool isMessageLine(std::string_view line) {
  if (line.substr(0, 3) != "KTB") return false;
  for (std::size_t at = findByte(line, '='); at != std::string_view::npos; at = findByte(line, '=', at + 1)) {
    const std::string_view start = line.substr(0, at);
    if (start.ends_with(".explanation") || start.ends_with(".useraction")) return false;
  }
  return true;
}

std::string contentOf(std::istream& file) {
  constexpr std::size_t kChunk = 65536;
  std::string content;
  while (file) {
    const std::size_t size = content.size();
    content.resize(size + kChunk);
    file.read(content.data() + size, kChunk);
    content.resize(size + static_cast<std::size_t>(file.gcount()));
  }
  return content;
}

// Takes a line off the front of the content, an empty one when there is none.
std::string_view takeLine(std::string_view& content) {
  const std::size_t end = std::min(findByte(content, '\n'), content.size());
  const std::string_view line = content.substr(0, end);
  content.remove_prefix(std::min(end + 1, content.size()));
  return line;
}

// Joins continuation lines. The next line replaces from the first backslash on, and a continuation at the end of
// the file never ends: both are how the catalogues have always been read.
void joinContinuations(std::string& text, std::string_view& content) {
  while (!text.empty() && text.back() == '\\') {
    const std::string_view next = takeLine(content);
    text.replace(text.find('\\'), next.size(), next);
  }
}

}  // namespace

std::string catalogueSuffix(const std::string& localeName) {
  constexpr std::size_t kShortest = 3;
  if (localeName.size() < kShortest) return ".properties";
  for (const Language& language : kLanguages) {
    if (localeName.rfind(language.prefix, 0) == 0) return language.suffix;
  }
  return ".properties";
}

std::vector<std::string> catalogueSuffixes() {
  std::vector<std::string> suffixes;
  for (const Language& language : kLanguages) {
    if (std::find(suffixes.begin(), suffixes.end(), language.suffix) == suffixes.end()) {
      suffixes.emplace_back(language.suffix);
    }
  }
  return suffixes;
}

Messages readCatalogue(std::istream& file) {
  const std::string content = contentOf(file);
  Messages messages;
  for (std::string_view rest = content; !rest.empty();) {
    const std::string_view line = takeLine(rest);
    if (!isMessageLine(line)) continue;
    const std::size_t equals = findByte(line, '=');
    std::string text(equals == std::string_view::npos ? line : line.substr(equals + 1));
    joinContinuations(text, rest);
    // In a file that is in order each key stands behind all others.
    messages.emplace_hint(messages.end(), line.substr(0, equals), std::move(text));
  }
  return messages;
}

}  // namespace tessel::internal
