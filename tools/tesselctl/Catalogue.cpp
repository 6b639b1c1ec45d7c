#include "Catalogue.h"

#include <algorithm>
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

bool named = false;

std::string lowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

// "_pt_BR.properties" becomes "pt_BR".
std::string languageOf(const std::string& suffix) {
  return suffix == kPlainSuffix ? "en" : suffix.substr(1, suffix.find('.') - 1);
}

}  // namespace

void findProduct() {
  named = !NYXUtils::getKTBProdRoot().empty();
  if (named) return;
  const std::string prefix = NYXUtils::getParent(executableFolder());
  for (const std::string& root : {prefix, prefix + "/product"}) {
    if (!isFolder(root + "/lib/messages")) continue;
    NYXUtils::setenv("KTB_PROD", root);
    return;
  }
}

bool productIsNamed() { return named; }

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
  constexpr std::size_t kAlone = 2;  // without a country
  const std::string wanted = lowerCase(language);
  std::string suffix = tessel::internal::catalogueSuffix(wanted.size() == kAlone ? wanted + '-' : wanted);
  if (suffix != kPlainSuffix || wanted.rfind("en", 0) == 0) return suffix;
  std::string known;
  for (const std::string& other : tessel::internal::catalogueSuffixes()) {
    known += (known.empty() ? "" : ", ") + languageOf(other);
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

// Where the library looks.
std::string catalogueFolder() {
  const std::string root = NYXUtils::getKTBProdRoot();
  return root.empty() ? "../vanta/lib/messages/" : root + "/lib/messages/";
}

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
    } else if (!messages.empty() && key == messages.back().key + ".explanation") {
      messages.back().explanation = text;
    } else if (!messages.empty() && key == messages.back().key + ".useraction") {
      messages.back().action = text;
    }
  }
  return messages;
}

}  // namespace tesselctl
