#include "host/CatalogueGate.h"

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

#include "internal/MessageText.h"
#include "internal/UnicodeEscapes.h"

namespace tessel::host {
namespace {

const std::string kExplanation = ".explanation";
const std::string kAction = ".useraction";
constexpr std::size_t kNumberLength = 9;

bool isMessage(const std::string& key) { return key.find('.') == std::string::npos; }

bool isNumbered(const std::string& key) { return isMessage(key) && key.rfind("KTBNV_", 0) != 0; }

bool isBlank(const std::string& text) { return text.find_first_not_of(' ') == std::string::npos; }

bool countFromZero(std::vector<int> numbers) {
  std::sort(numbers.begin(), numbers.end());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (numbers[i] != static_cast<int>(i)) return false;
  }
  return true;
}

std::vector<int> sorted(std::vector<int> numbers) {
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

std::size_t occurrences(const std::string& text, const std::string& wanted) {
  std::size_t count = 0;
  for (std::size_t at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1)) ++count;
  return count;
}

// Characters as people count them.
std::size_t lengthOf(const std::string& text) {
  const std::string utf8 = internal::withoutEscapes(text);
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; }));
}

template <class Wrong>
Findings keysWhere(const Texts& texts, Wrong wrong) {
  Findings found;
  for (const auto& [key, text] : texts) {
    if (wrong(key, text)) found.push_back(key);
  }
  return found;
}

// Keys that both have.
template <class Wrong>
Findings keysWhere(const Texts& english, const Texts& translated, Wrong wrong) {
  return keysWhere(translated, [&](const std::string& key, const std::string& text) {
    const auto original = english.find(key);
    return original != english.end() && wrong(key, original->second, text);
  });
}

bool rendersWrongly(const std::string& text) {
  std::string rendered = text;
  internal::collapseApostrophes(rendered);
  std::vector<std::string> inserts;
  for (std::size_t i = 0; i < placeholders(text).size(); ++i) inserts.push_back("<insert " + std::to_string(i) + ">");
  std::vector<const std::string*> pointers;
  for (const std::string& insert : inserts) pointers.push_back(&insert);
  const auto filled = internal::fillPlaceholders(rendered, pointers.data(), static_cast<int>(pointers.size()));
  const bool shownOnce = std::all_of(inserts.begin(), inserts.end(),
                                     [&](const std::string& insert) { return occurrences(rendered, insert) == 1; });
  return filled.match != internal::Match::complete || !shownOnce || rendered.find_first_of("{}") != std::string::npos;
}

}  // namespace

std::vector<Entry> entriesOf(const std::string& file) {
  std::vector<Entry> entries;
  std::istringstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line.front() == '#') continue;
    const std::size_t equals = line.find('=');
    const bool isEntry = equals != std::string::npos && equals > 0;
    entries.push_back(isEntry ? Entry{line.substr(0, equals), line.substr(equals + 1)} : Entry{"", line});
  }
  return entries;
}

std::vector<int> placeholders(const std::string& text) {
  std::vector<int> numbers;
  for (std::size_t at = text.find_first_of("{}"); at != std::string::npos; at = text.find_first_of("{}", at + 1)) {
    const bool is =
        text.size() > at + 2 && text[at] == '{' && text[at + 1] >= '0' && text[at + 1] <= '9' && text[at + 2] == '}';
    numbers.push_back(is ? text[at + 1] - '0' : -1);
    if (is) at += 2;
  }
  return numbers;
}

Texts textsOf(const std::string& file) {
  Texts texts;
  for (const Entry& entry : entriesOf(file)) texts.emplace(entry.key, entry.text);
  return texts;
}

Findings bytesThatAreNoPlainLines(const std::string& file) {
  Findings found;
  int line = 1;
  for (std::size_t i = 0; i < file.size(); ++i) {
    const bool ends = file[i] == '\n';
    const bool isText = ends || (file[i] >= ' ' && file[i] <= '~');
    if (!isText) found.push_back("line " + std::to_string(line) + ": byte " + std::to_string(file[i] & 0xFF));
    if (ends && i > 0 && file[i - 1] == '\\') found.push_back("line " + std::to_string(line) + ": ends in a backslash");
    line += ends ? 1 : 0;
  }
  if (file.empty() || file.back() != '\n') found.emplace_back("no line end at the end");
  return found;
}

Findings linesThatAreNoEntries(const std::string& file) {
  Findings found;
  for (const Entry& entry : entriesOf(file)) {
    if (entry.key.empty()) found.push_back(entry.text);
  }
  return found;
}

Findings keysDefinedTwice(const std::string& file) {
  Findings found;
  std::set<std::string> keys;
  for (const Entry& entry : entriesOf(file)) {
    if (!keys.insert(entry.key).second) found.push_back(entry.key);
  }
  return found;
}

Findings textsThatAreEmpty(const std::string& file) {
  Findings found;
  for (const Entry& entry : entriesOf(file)) {
    const bool padded = !entry.text.empty() && (entry.text.front() == ' ' || entry.text.back() == ' ');
    if (isBlank(entry.text) || padded) found.push_back(entry.key);
  }
  return found;
}

// What does not begin with KTB can never be loaded.
Findings keysOfNoKnownForm(const std::string& file) {
  static const std::regex message("KTBNV[0-9]{4}_[A-Z0-9_]+(\\.explanation|\\.useraction)?");
  static const std::regex element("KTBNV_[A-Z0-9_]+");
  Findings found;
  for (const Entry& entry : entriesOf(file)) {
    if (!std::regex_match(entry.key, message) && !std::regex_match(entry.key, element)) found.push_back(entry.key);
  }
  return found;
}

Findings escapesThatAreMalformed(const Texts& texts) {
  return keysWhere(texts, [](const std::string&, const std::string& text) {
    return internal::withoutEscapes(text).find('\\') != std::string::npos;
  });
}

Findings apostrophesThatStandAlone(const Texts& texts) {
  static const std::regex single("(^|[^'])'('')*([^']|$)");
  return keysWhere(texts, [](const std::string&, const std::string& text) { return std::regex_search(text, single); });
}

Findings placeholdersWithGaps(const Texts& texts) {
  return keysWhere(texts, [](const std::string& key, const std::string& text) {
    return isMessage(key) ? !countFromZero(placeholders(text)) : !placeholders(text).empty();
  });
}

Findings messagesWithoutExplanationOrAction(const Texts& texts) {
  Findings found;
  for (const auto& [key, text] : texts) {
    if (!isNumbered(key)) continue;
    for (const std::string& part : {kExplanation, kAction}) {
      if (texts.count(key + part) == 0) found.push_back(key + part);
    }
  }
  return found;
}

Findings explanationsWithoutMessage(const Texts& texts) {
  return keysWhere(texts, [&texts](const std::string& key, const std::string&) {
    return !isMessage(key) && texts.count(key.substr(0, key.find('.'))) == 0;
  });
}

Findings numbersUsedTwice(const Texts& texts) {
  Findings found;
  std::set<std::string> numbers;
  for (const auto& [key, text] : texts) {
    const std::string number = key.substr(0, kNumberLength);
    if (isNumbered(key) && !numbers.insert(number).second) found.push_back(number);
  }
  return found;
}

Findings messagesWithoutTheirNumber(const Texts& texts) {
  return keysWhere(texts, [](const std::string& key, const std::string& text) {
    return isNumbered(key) && !std::regex_match(text, std::regex(key.substr(0, kNumberLength) + "[EWI]: \\S.*"));
  });
}

Findings textsThatRenderWrongly(const Texts& texts) {
  return keysWhere(
      texts, [](const std::string& key, const std::string& text) { return isMessage(key) && rendersWrongly(text); });
}

Findings keysThatDiffer(const Texts& english, const Texts& translated) {
  Findings found;
  for (const auto& [key, text] : english) {
    if (translated.count(key) == 0) found.push_back("missing: " + key);
  }
  for (const auto& [key, text] : translated) {
    if (english.count(key) == 0) found.push_back("not in English: " + key);
  }
  return found;
}

Findings placeholdersThatDiffer(const Texts& english, const Texts& translated) {
  return keysWhere(english, translated, [](const std::string&, const std::string& original, const std::string& text) {
    return sorted(placeholders(original)) != sorted(placeholders(text));
  });
}

Findings severitiesThatDiffer(const Texts& english, const Texts& translated) {
  return keysWhere(english, translated,
                   [](const std::string& key, const std::string& original, const std::string& text) {
                     constexpr std::size_t kStart = kNumberLength + 3;  // "KTBNV0001E: "
                     return isNumbered(key) && original.substr(0, kStart) != text.substr(0, kStart);
                   });
}

Findings textsLeftInEnglish(const Texts& english, const Texts& translated, const std::vector<std::string>& allowed) {
  return keysWhere(english, translated,
                   [&](const std::string& key, const std::string& original, const std::string& text) {
                     return original == text && std::find(allowed.begin(), allowed.end(), key) == allowed.end();
                   });
}

Findings textsThatAreTooLong(const Texts& english, const Texts& translated) {
  return keysWhere(english, translated, [](const std::string&, const std::string& original, const std::string& text) {
    return 2 * lengthOf(text) > 5 * lengthOf(original);
  });
}

}  // namespace tessel::host
