#include <tessel/NativePropertyItem.h>

#include <charconv>
#include <limits>
#include <ostream>

#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace tessel {
namespace {

constexpr const char* kSpace = " \t\n\v\f\r";

std::string shown(const std::string* value) { return value ? *value : "null"; }

// What the scan of a decimal number makes of a text.
enum class Scan { number, tooLarge, nothing };

Scan scanInteger(const std::string& text, int& number) {
  std::size_t start = text.find_first_not_of(kSpace);
  if (start == std::string::npos) return Scan::nothing;
  if (text[start] == '+') {
    ++start;
    if (start < text.size() && text[start] == '-') return Scan::nothing;
  }
  const auto result = std::from_chars(text.data() + start, text.data() + text.size(), number);
  if (result.ec == std::errc::result_out_of_range) return Scan::tooLarge;
  return result.ec == std::errc() ? Scan::number : Scan::nothing;
}

std::string lowerCase(const std::string& text) {
  std::string lower = text;
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

}  // namespace

const RasDescriptor NativePropertyItem::rd("NativePropertyItem", internal::kMessages);

NativePropertyItem::NativePropertyItem(const std::string& key, Type type) : key_(key), type_(type) {
  const internal::MethodTrace trace(rd, this, "NativePropertyItem", key);
}

NativePropertyItem::NativePropertyItem(const std::string& key, const std::string& defaultValue)
    : NativePropertyItem(key, STRING) {
  defaultString_ = defaultValue;
}

NativePropertyItem::NativePropertyItem(const std::string& key, const char* defaultValue)
    : NativePropertyItem(key, std::string(defaultValue)) {}

NativePropertyItem::NativePropertyItem(const std::string& key) : NativePropertyItem(key, STRING) {}

NativePropertyItem::NativePropertyItem(const std::string& key, int defaultValue)
    : NativePropertyItem(key, defaultValue, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()) {}

NativePropertyItem::NativePropertyItem(const std::string& key, int defaultValue, int minimum, int maximum)
    : NativePropertyItem(key, INTEGER) {
  defaultInteger_ = defaultValue;
  minimum_ = minimum;
  maximum_ = maximum;
}

NativePropertyItem::NativePropertyItem(const std::string& key, bool defaultValue) : NativePropertyItem(key, BOOLEAN) {
  defaultBoolean_ = defaultValue;
}

NativePropertyItem::NativePropertyItem(const NativePropertyItem& other) = default;
NativePropertyItem& NativePropertyItem::operator=(const NativePropertyItem& other) = default;
NativePropertyItem::~NativePropertyItem() = default;

const std::string& NativePropertyItem::getKey() const {
  internal::MethodTrace trace(rd, this, "getKey");
  return trace.result(key_);
}

NativePropertyItem::Type NativePropertyItem::getType() const { return type_; }
int NativePropertyItem::getMinimum() const { return minimum_; }
int NativePropertyItem::getMaximum() const { return maximum_; }

std::string NativePropertyItem::getDefaultStringValue() const {
  internal::MethodTrace trace(rd, this, "getDefaultStringValue");
  return trace.result(defaultString_);
}

int NativePropertyItem::getDefaultIntegerValue() const {
  internal::MethodTrace trace(rd, this, "getDefaultIntegerValue");
  return trace.result(defaultInteger_);
}

bool NativePropertyItem::getDefaultBooleanValue() const {
  internal::MethodTrace trace(rd, this, "getDefaultBooleanValue");
  return trace.result(defaultBoolean_);
}

std::string NativePropertyItem::getStringValue(const std::string* value) const {
  internal::MethodTrace trace(rd, this, "getStringValue", shown(value));
  if (type_ != STRING) throw trace.failure<NYXException>("KTBNV0115_NOT_A_STRING_PROP", key_);
  return trace.result(value ? *value : defaultString_);
}

int NativePropertyItem::getIntegerValue(const std::string* value) const {
  internal::MethodTrace trace(rd, this, "getIntegerValue", shown(value));
  if (type_ != INTEGER) throw trace.failure<NYXException>("KTBNV0116_NOT_AN_INTEGER_PROP", key_);
  if (!value) return trace.result(defaultInteger_);
  int number = 0;
  const Scan scan = scanInteger(*value, number);
  if (scan == Scan::nothing) throw trace.failure<NYXException>("KTBNV0118_NOT_AN_INTEGER", key_, *value);
  if (scan == Scan::tooLarge || number < minimum_ || number > maximum_) {
    throw trace.failure<NYXException>("KTBNV0119_OUT_OF_RANGE", key_, *value, std::to_string(minimum_),
                                      std::to_string(maximum_));
  }
  return trace.result(number);
}

bool NativePropertyItem::getBooleanValue(const std::string* value) const {
  internal::MethodTrace trace(rd, this, "getBooleanValue", shown(value));
  if (type_ != BOOLEAN) throw trace.failure<NYXException>("KTBNV0117_NOT_A_BOOLEAN_PROP", key_);
  if (!value) return trace.result(defaultBoolean_);
  const std::string text = lowerCase(*value);
  if (text == "true" || text == "yes" || text == "on") return trace.result(true);
  if (text == "false" || text == "no" || text == "off") return trace.result(false);
  throw trace.failure<NYXException>("KTBNV0120_INVALID_BOOLEAN", key_, *value);
}

std::ostream& operator<<(std::ostream& stream, const NativePropertyItem& item) {
  stream << item.key_;
  switch (item.type_) {
    case NativePropertyItem::STRING:
      return stream << "string value: " << item.defaultString_;
    case NativePropertyItem::INTEGER:
      return stream << "integer value: " << item.defaultInteger_ << " (min: " << item.minimum_
                    << ", max: " << item.maximum_ << ")";
    case NativePropertyItem::BOOLEAN:
      return stream << "boolean value: " << (item.defaultBoolean_ ? 1 : 0);
    default:
      return stream << "unknown type";
  }
}

}  // namespace tessel
