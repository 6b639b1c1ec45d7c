#include <tessel/NativeProperties.h>

#include <array>
#include <fstream>
#include <ostream>
#include <string_view>

#include <tessel/NYXException.h>
#include <tessel/NativePropertyItem.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"
#include "internal/PropertiesText.h"

namespace tessel {
namespace {

// In text mode, as properties files have always been read.
std::string readAll(std::ifstream& file) {
  std::string text;
  std::array<char, 65536> block{};
  do {
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    text.append(block.data(), static_cast<std::size_t>(file.gcount()));
  } while (file);
  return text;
}

}  // namespace

const RasDescriptor NativeProperties::rd("NativeProperties", internal::kMessages);

NativeProperties::NativeProperties() = default;
NativeProperties::NativeProperties(const NativeProperties& other) = default;
NativeProperties& NativeProperties::operator=(const NativeProperties& other) = default;
NativeProperties::~NativeProperties() = default;

void NativeProperties::loadProperties(const std::string& path) {
  const internal::MethodTrace trace(rd, this, "loadProperties", path);
  filePath_ = path;
  loadProperties();
}

void NativeProperties::reloadProperties() {
  const internal::MethodTrace trace(rd, this, "reloadProperties");
  loadProperties();
}

void NativeProperties::loadProperties() {
  const internal::MethodTrace trace(rd, this, "loadProperties");
  if (filePath_.empty()) throw trace.failure<NYXException>("KTBNV0123_PROP_FILE_PATH_EMPTY", filePath_);
  std::ifstream file(filePath_);
  if (!file.is_open()) throw trace.failure<NYXException>("KTBNV0122_PROP_FILE_OPEN_FAILED", filePath_);
  trace.data(TraceLevel::MODERATE, "Loading properties from " + filePath_);
  loaded_ = std::make_shared<internal::PropertiesText>(readAll(file));
  set_.clear();
}

void NativeProperties::setProperty(const std::string& key, const std::string& value) {
  const internal::MethodTrace trace(rd, this, "setProperty", key, value);
  set_.insert_or_assign(key, value);
}

std::optional<std::string> NativeProperties::find(const std::string& key) const {
  const auto entry = set_.find(key);
  if (entry != set_.end()) return entry->second;
  const internal::PropertiesText::Entry* loaded = loaded_ ? loaded_->find(key) : nullptr;
  if (!loaded) return std::nullopt;
  return std::string(loaded->value);
}

bool NativeProperties::contains(const NativePropertyItem& item) const {
  internal::MethodTrace trace(rd, this, "contains", item);
  return trace.result(find(item.getKey()).has_value());
}

std::string NativeProperties::getPropertyAsString(const NativePropertyItem& item) const {
  internal::MethodTrace trace(rd, this, "getPropertyAsString", item);
  const auto value = find(item.getKey());
  return trace.result(item.getStringValue(value ? &*value : nullptr));
}

int NativeProperties::getPropertyAsInteger(const NativePropertyItem& item) const {
  internal::MethodTrace trace(rd, this, "getPropertyAsInteger", item);
  const auto value = find(item.getKey());
  return trace.result(item.getIntegerValue(value ? &*value : nullptr));
}

bool NativeProperties::getPropertyAsBoolean(const NativePropertyItem& item) const {
  internal::MethodTrace trace(rd, this, "getPropertyAsBoolean", item);
  const auto value = find(item.getKey());
  return trace.result(item.getBooleanValue(value ? &*value : nullptr));
}

bool NativeProperties::isAgentProperties() const {
  internal::MethodTrace trace(rd, this, "isAgentProperties");
  return trace.result(filePath_.find("agent.properties") != std::string::npos);
}

bool NativeProperties::isLoggerProperties() const {
  internal::MethodTrace trace(rd, this, "isLoggerProperties");
  return trace.result(filePath_.find("logger.properties") != std::string::npos);
}

std::ostream& operator<<(std::ostream& stream, const NativeProperties& properties) {
  std::map<std::string_view, std::string_view> entries(properties.set_.begin(), properties.set_.end());
  if (properties.loaded_) {
    for (const auto& entry : properties.loaded_->entries()) entries.emplace(entry.key, entry.value);
  }
  const char* separator = "";
  for (const auto& [key, value] : entries) {
    stream << separator << key << '=' << value;
    separator = ",";
  }
  return stream;
}

}  // namespace tessel
