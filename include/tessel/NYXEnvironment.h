/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

/// Values that the process sets for itself at run time, apart from the environment of the operating system.
///
/// The log directory is the property "com.kelvo.tessel.native.logdir". Lives for the process and is never cleared.
/// Any thread.
class TESSEL_API NYXEnvironment {
 public:
  NYXEnvironment() = delete;

  /// @return the value stored. @throws PropertyNotFoundException with the key as its text when there is none.
  static std::string getProperty(const std::string& key);

  /// Stores the value unless the key has one already: the first one stays, so that what was decided at start cannot
  /// be undone later.
  static void setProperty(const std::string& key, const std::string& value);
};

}  // namespace tessel
