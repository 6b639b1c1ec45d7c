/// @file
#pragma once

#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <tessel/Export.h>

namespace tessel {

namespace internal {
class PropertiesText;
}

class NativePropertyItem;
class RasDescriptor;

/// The entries of one properties file.
///
/// Simpler than the common format: one entry per line, the first "=" separates, "#" in column one is a comment; no
/// escapes, no continuation lines, bytes are kept as read. Of two entries with the same key in a file the first
/// wins. Not locked: load before threads share an object.
class TESSEL_API NativeProperties {
 public:
  NativeProperties();
  NativeProperties(const NativeProperties& other);
  NativeProperties& operator=(const NativeProperties& other);
  virtual ~NativeProperties();

  /// Replaces all entries by those of the file and remembers its path.
  ///
  /// The path is remembered also when that fails. Of a file that cannot be read to its end the entries read so far
  /// are kept.
  /// @throws NYXException KTBNV0123 for an empty path, KTBNV0122 when the file cannot be opened; the entries are
  ///         then as before.
  void loadProperties(const std::string& path);

  /// As loadProperties with the path remembered. @throws NYXException as there.
  void reloadProperties();

  /// Sets an entry, replacing one that is there; nothing is trimmed.
  void setProperty(const std::string& key, const std::string& value);

  /// @return whether there is an entry with the item's key, be its value empty.
  bool contains(const NativePropertyItem& item) const;

  /// @throws NYXException as NativePropertyItem::getStringValue.
  std::string getPropertyAsString(const NativePropertyItem& item) const;
  /// @throws NYXException as NativePropertyItem::getIntegerValue.
  int getPropertyAsInteger(const NativePropertyItem& item) const;
  /// @throws NYXException as NativePropertyItem::getBooleanValue.
  bool getPropertyAsBoolean(const NativePropertyItem& item) const;

  /// @return whether the path remembered contains "agent.properties"; the contents do not matter.
  bool isAgentProperties() const;
  /// @return whether the path remembered contains "logger.properties"; the contents do not matter.
  bool isLoggerProperties() const;

 private:
  friend TESSEL_API std::ostream& operator<<(std::ostream& stream, const NativeProperties& properties);

  void loadProperties();
  std::optional<std::string> find(const std::string& key) const;

  static const RasDescriptor rd;

  std::shared_ptr<const internal::PropertiesText> loaded_;  // null before the first load
  std::map<std::string, std::string> set_;                  // by setProperty; hides what was loaded
  std::string filePath_;
};

/// Writes the entries as key=value, separated by commas, in key order.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const NativeProperties& properties);

}  // namespace tessel
