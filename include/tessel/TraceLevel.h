/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/Export.h>

namespace tessel {

/// The detail of a trace point; a lower value is more detail.
class TESSEL_API TraceLevel {
 public:
  enum TraceLevelValue : int { VERBOSE = 11, MODERATE = 21, FLOW = 31, OFF = 9999 };

  /// OFF.
  TraceLevel();
  TraceLevel(const TraceLevelValue& value);  // NOLINT(google-explicit-constructor): a level is its value
  TraceLevel(const TraceLevel& other);
  TraceLevel& operator=(const TraceLevel& other);
  virtual ~TraceLevel();

  bool operator==(const TraceLevel& other) const;
  bool operator!=(const TraceLevel& other) const;
  bool operator>=(const TraceLevel& other) const;

  /// @return the name padded to 8 characters; "???     " for an unknown value.
  std::string toString() const;

  /// @return the raw value.
  int getValue() const;

 private:
  friend class RasDescriptor;

  int value_;
};

/// Writes `level.toString()`.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const TraceLevel& level);

}  // namespace tessel
