#include <tessel/ResourceBundle.h>

#include <atomic>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

#include <tessel/EventLog.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/NYXUtils.h>

#include "internal/Bundles.h"
#include "internal/CatalogueFile.h"
#include "internal/MethodTrace.h"
#include "internal/PlatformServices.h"

namespace tessel {

const RasDescriptor ResourceBundle::rd("ResourceBundle", internal::kMessages);

struct ResourceBundle::Catalogue {
  std::string name;
  internal::Messages messages;
  // Into the messages: a look-up by the order of the keys would compare a handful of them.
  std::unordered_map<std::string_view, const std::string*> texts;

  void fillTexts() {
    texts.clear();
    for (const auto& [key, text] : messages) texts.emplace(key, &text);
  }
};

// Replaced as a whole, never changed: look-ups take no lock. The few former maps are kept in `previous`.
struct ResourceBundle::Cache {
  std::unordered_map<std::string, ResourceBundle> bundles;
  const Cache* previous = nullptr;
};

namespace {

std::atomic<const void*> currentCache{nullptr};
std::atomic<bool> propsFilesMissing{false};

}  // namespace

const ResourceBundle::Cache* ResourceBundle::cache() {
  return static_cast<const Cache*>(currentCache.load(std::memory_order_acquire));
}

// Of two threads that read the same file at once the first one's bundle stays.
void ResourceBundle::remember(const std::string& name, const ResourceBundle& bundle) {
  const Cache* known = cache();
  const void* expected = known;
  auto next = std::make_unique<Cache>();
  do {
    known = static_cast<const Cache*>(expected);
    if (known) next->bundles = known->bundles;
    next->previous = known;
    next->bundles.emplace(name, bundle);
  } while (!currentCache.compare_exchange_weak(expected, next.get(), std::memory_order_acq_rel));
  next.release();  // NOLINT(bugprone-unused-return-value): the cache keeps it
}

ResourceBundle ResourceBundle::getBundle(const std::string& name) {
  const internal::MethodTrace trace(rd, nullptr, "getBundle", name);
  if (const Cache* known = cache()) {
    const auto bundle = known->bundles.find(name);
    if (bundle != known->bundles.end()) {
      // The two data texts read the wrong way round; service staff know them so.
      trace.data(TraceLevel::MODERATE, "Instantiating bundle for first time");
      return bundle->second;
    }
  }
  trace.data(TraceLevel::MODERATE, "Re-loading bundle from hash map");
  const ResourceBundle bundle(name);
  remember(name, bundle);
  return bundle;
}

ResourceBundle::ResourceBundle(const std::string& name) {
  const internal::MethodTrace trace(rd, this, "<init>", name);
  const auto catalogue = std::make_shared<Catalogue>();
  catalogue->name = name;
  catalogue_ = catalogue;
  if (const std::unique_ptr<std::istream> file = getResourcesFile()) {
    catalogue->messages = internal::readCatalogue(*file);
    catalogue->fillTexts();
  }
}

ResourceBundle::ResourceBundle(const ResourceBundle& other) = default;
ResourceBundle& ResourceBundle::operator=(const ResourceBundle& other) = default;
ResourceBundle::~ResourceBundle() = default;

std::string ResourceBundle::getString(const std::string& key) const { return find(key); }

const std::string& ResourceBundle::find(const std::string& key) const {
  internal::MethodTrace trace(rd, this, "getString", key);
  const auto text = catalogue_->texts.find(key);
  return trace.result(text == catalogue_->texts.end() ? key : *text->second);
}

void ResourceBundle::setupUnitTest() {
  const internal::MethodTrace trace(rd, this, "setupUnitTest");
  const auto catalogue = std::make_shared<Catalogue>(*catalogue_);
  for (const char* number : {"1", "2", "3", "4", "5"}) {
    catalogue->messages.emplace(std::string("UT_NLS_KEY_") + number, std::string("Error message ") + number);
  }
  catalogue->fillTexts();
  catalogue_ = catalogue;
}

std::string ResourceBundle::fileSuffix() {
  const internal::MethodTrace trace(rd, nullptr, "fileSuffix");
  try {
    std::string name = internal::userLocaleName();
    if (name == "*") throw std::runtime_error("bad locale name");
    for (char& c : name) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return internal::catalogueSuffix(name);
  } catch (const std::exception& exception) {
    trace.data(TraceLevel::MODERATE, "Caught exception determining locale", exception.what());
    return ".properties";
  }
}

std::string ResourceBundle::pathOf(const std::string& suffix) const {
  const std::string& name = catalogue_->name;
  const std::string root = NYXUtils::getKTBProdRoot();
  const std::string directory = root.empty() ? "../vanta/lib/messages/" : root + "/lib/messages/";
  return directory + name.substr(name.rfind('.') + 1) + suffix;
}

// A missing file of another language is tried again without end: there is no fall-back, on purpose.
std::unique_ptr<std::istream> ResourceBundle::getResourcesFile() const {
  const internal::MethodTrace trace(rd, this, "getResourcesFile");
  const std::string suffix = fileSuffix();
  const std::string path = pathOf(suffix);
  const bool retry = suffix != ".properties";
  do {
    auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (file->is_open() && !file->fail()) {
      trace.data(TraceLevel::MODERATE, "Loading resources from ", path);
      return file;
    }
    trace.data(TraceLevel::MODERATE, "Cannot load resources from ", path);
  } while (retry);
  warnOnceAboutMissingFile(path);
  return nullptr;
}

void ResourceBundle::warnOnceAboutMissingFile(const std::string& path) const {
  if (propsFilesMissing.exchange(true)) return;
  EventLog::warningNoFormat(rd, "File: " + path + " could not be found for ResourceBundle '" + catalogue_->name + "'");
}

}  // namespace tessel
