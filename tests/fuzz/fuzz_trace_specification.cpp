// Any trace specification switches trace on, and its last entry holds for the logger that it names.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <tessel/LogLevel.h>
#include <tessel/Logger.h>
#include <tessel/RAS.h>

namespace {

using tessel::LogLevel;

// Loggers live for the process: few letters and short names keep their number bounded.
constexpr std::size_t kLongest = 40;

std::string specification(const std::uint8_t* data, std::size_t size) {
  static const std::string kAlphabet = "ab.,:=+ ALLOFFINFOWARNINGERRORSEVEREFATALCONFIGFLOWVERBOSEMODERATE";
  std::string text(data, data + std::min(size, kLongest));
  for (char& c : text) {
    if (kAlphabet.find(c) == std::string::npos) c = static_cast<char>('a' + static_cast<unsigned char>(c) % 2);
  }
  return text;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  parts.erase(std::remove(parts.begin(), parts.end(), ""), parts.end());
  return parts;
}

int levelOf(std::string word) {
  static const std::map<std::string, int> kLevels{
      {"ALL", LogLevel::ALL},      {"VERBOSE", LogLevel::FINEST}, {"MODERATE", LogLevel::FINER},
      {"FLOW", LogLevel::FINE},    {"CONFIG", LogLevel::CONFIG},  {"WARNING", LogLevel::WARNING},
      {"ERROR", LogLevel::SEVERE}, {"SEVERE", LogLevel::SEVERE},  {"FATAL", LogLevel::SEVERE}};
  for (char& c : word) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  const auto known = kLevels.find(word);
  return known == kLevels.end() ? static_cast<int>(LogLevel::INFO) : known->second;
}

struct Setting {
  std::string name;
  int level;
};

// What the last entry with a name sets; nothing when no entry has one.
std::optional<Setting> lastSetting(const std::string& text) {
  std::optional<Setting> last;
  for (const std::string& entry : split(text.substr(0, 1) == "+" ? text.substr(1) : text, ':')) {
    const std::size_t equals = entry.find('=', 1);
    if (equals == std::string::npos && entry.front() == '=') {
      last = Setting{"", levelOf(entry.substr(1))};
      continue;
    }
    const bool leveled = equals != std::string::npos;
    for (std::string name : split(leveled ? entry.substr(0, equals) : entry, ',')) {
      if (name.front() == '.') name.erase(0, 1);
      last = Setting{name, leveled ? levelOf(entry.substr(equals + 1)) : static_cast<int>(LogLevel::ALL)};
    }
  }
  return last;
}

int shownLevel(const tessel::Logger& logger) {
  for (const int level : {LogLevel::ALL, LogLevel::FINEST, LogLevel::FINER, LogLevel::FINE, LogLevel::CONFIG,
                          LogLevel::INFO, LogLevel::WARNING, LogLevel::SEVERE}) {
    if (logger.isLoggable(static_cast<LogLevel::LogLevelValue>(level))) return level;
  }
  return LogLevel::OFF;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = specification(data, size);
  tessel::RAS::setLevel(text);
  if (!tessel::RAS::isTraceAvailable()) std::abort();
  const std::optional<Setting> last = lastSetting(text);
  if (last && shownLevel(*tessel::Logger::getLogger(last->name)) != last->level) std::abort();
  tessel::RAS::setLevel("");
  return 0;
}
