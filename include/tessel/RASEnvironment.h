/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/Export.h>

namespace tessel {

/// The kind of process that the library runs in; decides which log handlers are installed.
class TESSEL_API RASEnvironment {
 public:
  /// The value 3 is not assigned.
  enum RASEnvironmentValue : int { DAEMON = 1, DAEMON_FOREGROUND = 2, UNITTEST = 4, JAVA_APP = 5, UNSPECIFIED = 9999 };

  /// UNSPECIFIED.
  RASEnvironment();
  RASEnvironment(const RASEnvironmentValue& value);  // NOLINT(google-explicit-constructor): it is its value
  RASEnvironment(const RASEnvironment& other);
  RASEnvironment& operator=(const RASEnvironment& other);
  virtual ~RASEnvironment();

  bool operator==(const RASEnvironment& other) const;
  bool operator!=(const RASEnvironment& other) const;

  /// @return the name padded to 17 characters; "???" padded for an unknown value.
  std::string toString() const;

  /// @return the raw value.
  int getValue() const;

 private:
  int value_;
};

/// Writes `environment.toString()`.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const RASEnvironment& environment);

}  // namespace tessel
