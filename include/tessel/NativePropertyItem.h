/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/Export.h>

namespace tessel {

class RasDescriptor;

/// One configuration key: its name, type, default and, for an integer, its inclusive range.
///
/// Immutable; may be shared between threads.
class TESSEL_API NativePropertyItem {
 public:
  enum Type : int { STRING = 0, INTEGER = 1, BOOLEAN = 2 };

  /// A string with a default.
  NativePropertyItem(const std::string& key, const std::string& defaultValue);
  /// As above, so that a literal does not become a boolean.
  NativePropertyItem(const std::string& key, const char* defaultValue);
  /// A string with an empty default.
  explicit NativePropertyItem(const std::string& key);
  /// An integer of the full signed 32-bit range.
  NativePropertyItem(const std::string& key, int defaultValue);
  /// An integer from `minimum` to `maximum`. The default itself is not checked against the range.
  NativePropertyItem(const std::string& key, int defaultValue, int minimum, int maximum);
  /// A boolean.
  NativePropertyItem(const std::string& key, bool defaultValue);
  NativePropertyItem(const NativePropertyItem& other);
  NativePropertyItem& operator=(const NativePropertyItem& other);
  virtual ~NativePropertyItem();

  /// @return the key, exactly as it stands in files.
  const std::string& getKey() const;
  Type getType() const;
  /// @return the least value of an integer; 0 for the other types.
  int getMinimum() const;
  /// @return the greatest value of an integer; 0 for the other types.
  int getMaximum() const;
  /// @return the default of a string; empty for the other types.
  std::string getDefaultStringValue() const;
  /// @return the default of an integer; 0 for the other types.
  int getDefaultIntegerValue() const;
  /// @return the default of a boolean; false for the other types.
  bool getDefaultBooleanValue() const;

  /// @param value the raw text, or null when the key is absent.
  /// @return the text unchanged, or the default when absent. @throws NYXException KTBNV0115 when this is not a string.
  std::string getStringValue(const std::string* value) const;

  /// Leading white space and a sign are accepted, anything behind the digits is ignored.
  ///
  /// @param value the raw text, or null when the key is absent.
  /// @return the number, or the default when absent; a bad value never falls back to the default.
  /// @throws NYXException KTBNV0116 when this is not an integer, KTBNV0118 when the text is no number, KTBNV0119
  ///         when it is outside the range or beyond 32 bits.
  int getIntegerValue(const std::string* value) const;

  /// "true", "yes", "on", "false", "no" and "off" in any case, nothing else and no blanks around.
  ///
  /// @param value the raw text, or null when the key is absent.
  /// @return the truth value, or the default when absent; a bad value never falls back to the default.
  /// @throws NYXException KTBNV0117 when this is not a boolean, KTBNV0120 when the text is none.
  bool getBooleanValue(const std::string* value) const;

 private:
  friend TESSEL_API std::ostream& operator<<(std::ostream& stream, const NativePropertyItem& item);

  NativePropertyItem(const std::string& key, Type type);

  static const RasDescriptor rd;

  std::string key_;
  Type type_;
  std::string defaultString_;
  int defaultInteger_ = 0;
  bool defaultBoolean_ = false;
  int minimum_ = 0;
  int maximum_ = 0;
};

/// Writes the key, directly followed by the type, the default and an integer's range.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const NativePropertyItem& item);

}  // namespace tessel
