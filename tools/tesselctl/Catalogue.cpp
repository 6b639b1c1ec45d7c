#include "Catalogue.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <tessel/NYXUtils.h>

#include "System.h"
#include "internal/CatalogueFile.h"
#include "internal/PlatformServices.h"

namespace tesselctl {
namespace {

using tessel::NYXUtils;

constexpr const char* kPlainSuffix = ".properties";

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

std::string languageSuffix() {
  try {
    std::string locale = tessel::internal::userLocaleName();
    for (char& c : locale) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return tessel::internal::catalogueSuffix(locale);
  } catch (const std::runtime_error&) {
    return kPlainSuffix;
  }
}

// The library carries on without the English texts, and says so itself.
void checkCatalogues() {
  const std::string suffix = languageSuffix();
  if (suffix == kPlainSuffix) return;
  for (const char* name : {"KTBNVMessages", "KTBNVElements"}) {
    const std::string path = NYXUtils::getKTBProdRoot() + "/lib/messages/" + name + suffix;
    if (!std::ifstream(path)) {
      throw std::runtime_error("the message catalogue of the user's language is missing: " + path);
    }
  }
}

}  // namespace

void prepareCatalogue() {
  findProduct();
  checkCatalogues();
}

}  // namespace tesselctl
