#include "Catalogue.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <tessel/NYXUtils.h>

#include "System.h"
#include "internal/CatalogueFile.h"
#include "internal/PlatformServices.h"
#include "internal/UnicodeEscapes.h"

namespace tesselctl {
namespace {

using tessel::NYXUtils;

constexpr const char* kPlainSuffix = ".properties";
const std::string kMessages = "KTBNVMessages";

std::string lowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

// "_pt_BR.properties" becomes "pt_br".
std::string languageOf(const std::string& suffix) {
  return suffix == kPlainSuffix ? "en" : lowerCase(suffix.substr(1, suffix.find('.') - 1));
}

std::string withoutEnd(const std::string& text, const std::string& end) {
  const bool ends = text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
  return ends ? text.substr(0, text.size() - end.size()) : std::string();
}

}  // namespace

void findProduct() {
  if (!NYXUtils::getKTBProdRoot().empty()) return;
  const std::string prefix = NYXUtils::getParent(executableFolder());
  for (const std::string& root : {prefix, prefix + "/product"}) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(root + "/lib/messages", ignored)) continue;
    NYXUtils::setenv("KTB_PROD", root);
    return;
  }
}

// The library carries on without the English texts, and says so itself.
void checkCatalogues() {
  const std::string suffix = userCatalogueSuffix();
  if (suffix == kPlainSuffix) return;
  for (const std::string& name : catalogueNames(suffix)) {
    const std::string path = catalogueFolder() + name;
    if (!std::ifstream(path)) {
      throw std::runtime_error("the message catalogue of the user's language is missing: " + path);
    }
  }
}

std::string catalogueSuffixOf(const std::string& language) {
  std::string wanted = lowerCase(language);
  std::replace(wanted.begin(), wanted.end(), '-', '_');
  std::string known;
  for (const std::string& suffix : tessel::internal::catalogueSuffixes()) {
    const std::string name = languageOf(suffix);
    if (wanted == name || wanted == name.substr(0, 2)) return suffix;
    known += (known.empty() ? "" : ", ") + name;
  }
  throw std::runtime_error("there are no messages in the language " + language + "; there are " + known);
}

std::string userLocale() {
  try {
    return tessel::internal::userLocaleName();
  } catch (const std::runtime_error&) {
    return {};
  }
}

std::string userCatalogueSuffix() { return tessel::internal::catalogueSuffix(lowerCase(userLocale())); }

std::string catalogueFolder() { return NYXUtils::getKTBProdRoot() + "/lib/messages/"; }

std::vector<std::string> catalogueNames(const std::string& suffix) {
  return {kMessages + suffix, "KTBNVElements" + suffix};
}

std::vector<Message> readMessages(const std::string& suffix) {
  const std::string path = catalogueFolder() + kMessages + suffix;
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read the message catalogue " + path);
  std::vector<Message> messages;
  for (std::string line; std::getline(file, line);) {
    const std::size_t equals = line.find('=');
    if (line.compare(0, 3, "KTB") != 0 || equals == std::string::npos) continue;
    const std::string key = line.substr(0, equals);
    const std::string text = tessel::internal::withoutEscapes(line.substr(equals + 1));
    if (key.find('.') == std::string::npos) {
      messages.push_back({key, text, {}, {}});
    } else if (!messages.empty() && withoutEnd(key, ".explanation") == messages.back().key) {
      messages.back().explanation = text;
    } else if (!messages.empty() && withoutEnd(key, ".useraction") == messages.back().key) {
      messages.back().action = text;
    }
  }
  return messages;
}

}  // namespace tesselctl
