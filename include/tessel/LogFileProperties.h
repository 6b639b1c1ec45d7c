/// @file
#pragma once

#include <map>
#include <string>

#include <tessel/Export.h>

namespace tessel {

/// Where a log file lies, how it rotates and who may read it. A plain value.
class TESSEL_API LogFileProperties {
 public:
  using ApplicationProperties = std::map<std::string, std::string>;

  /// @param pattern path of the file; "%g" stands for the number of a generation.
  /// @param limit bytes from which on a file is rotated.
  /// @param count generations that are kept.
  /// @param append continue the file of the last run instead of rotating it away.
  /// @param canRead everyone may read and write the files; otherwise only the user and the administrators.
  LogFileProperties(const std::string& pattern, int limit, int count, bool append, bool canRead);

  const std::string& getPattern() const;
  int getLimit() const;
  int getCount() const;
  bool isAppend() const;
  bool isCanRead() const;

  /// Adds a line for the banner of the file, or replaces the one of that key.
  void addApplicationProperty(const std::string& key, const std::string& value);
  /// @return in the order of the keys.
  const ApplicationProperties& getApplicationProperties() const;

 private:
  std::string pattern_;
  int limit_;
  int count_;
  bool append_;
  bool canRead_;
  ApplicationProperties applicationProperties_;
};

}  // namespace tessel
