#include "internal/CatalogueFile.h"

#include <algorithm>
#include <array>
#include <istream>

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

bool isMessageLine(const std::string& line) {
  return line.compare(0, 3, "KTB") == 0 && line.find(".useraction=") == std::string::npos &&
         line.find(".explanation=") == std::string::npos;
}

// Joins continuation lines. The next line replaces from the first backslash on, and a continuation at the end of
// the file never ends: both are how the catalogues have always been read.
void joinContinuations(std::string& text, std::istream& file) {
  while (!text.empty() && text.back() == '\\') {
    std::string next;
    std::getline(file, next);
    const std::size_t backslash = text.find('\\');
    text.replace(backslash, next.size(), next);
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
  Messages messages;
  for (std::string line; std::getline(file, line);) {
    if (!isMessageLine(line)) continue;
    const std::size_t equals = line.find('=');
    std::string text = equals == std::string::npos ? line : line.substr(equals + 1);
    joinContinuations(text, file);
    messages.emplace(line.substr(0, equals), std::move(text));
  }
  return messages;
}

}  // namespace tessel::internal
