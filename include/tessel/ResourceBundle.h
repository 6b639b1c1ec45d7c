/// @file
#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include <tessel/Export.h>

namespace tessel {

class RasDescriptor;

/// The catalogue of translated message texts of one bundle name, in the user's language.
///
/// The file lies under the product root in lib/messages; each file is read once per process. Bundles are immutable
/// and shared: a copy is a pointer copy, and getBundle() and getString() may be called from any thread. Nothing is
/// thrown: a missing file gives an empty catalogue, a missing key gives the key.
class TESSEL_API ResourceBundle {
 public:
  /// @param name dotted; the part behind the last dot is the file's name.
  /// @return the bundle, read on the first call for that name.
  ///
  /// When the file of a language other than English is missing this call does not return until the file can be
  /// read: there is no fall-back to English, on purpose. Look whether the file exists before the first message.
  static ResourceBundle getBundle(const std::string& name);

  /// Reads the catalogue of that name, past the cache.
  explicit ResourceBundle(const std::string& name);
  ResourceBundle(const ResourceBundle& other);
  ResourceBundle& operator=(const ResourceBundle& other);
  virtual ~ResourceBundle();

  /// @return the text of the key, or the key itself.
  std::string getString(const std::string& key) const;

  /// Adds "UT_NLS_KEY_1" to "UT_NLS_KEY_5" with "Error message 1" to "Error message 5" to this object only.
  void setupUnitTest();

 private:
  friend class NLS;

  struct Catalogue;
  struct Cache;

  static const Cache* cache();
  static void remember(const std::string& name, const ResourceBundle& bundle);
  static std::string fileSuffix();

  // The text of the key, or `key` itself.
  const std::string& find(const std::string& key) const;
  std::unique_ptr<std::istream> getResourcesFile() const;
  std::string pathOf(const std::string& suffix) const;
  void warnOnceAboutMissingFile(const std::string& path) const;

  static const RasDescriptor rd;

  std::shared_ptr<const Catalogue> catalogue_;
};

}  // namespace tessel
