/// @file
#pragma once

#include <string>

#include <tessel/Export.h>
#include <tessel/RASEnvironment.h>
#include <tessel/TraceLevel.h>

namespace tessel {

class Logger;
class LogLevel;

/// Switches the diagnostics of the process.
///
/// Every operation may be called from any thread. The queries take no lock.
class TESSEL_API RAS {
 public:
  /// Applies a trace specification: entries separated by ':', each `names=level`, `names` (everything) or `=level`
  /// (all classes), names separated by ','. A leading '+' adds to what is in force; otherwise that is discarded
  /// first. Levels are FLOW, MODERATE, VERBOSE, ALL, OFF, INFO, CONFIG, WARNING and ERROR, SEVERE or FATAL in any
  /// case; any other word counts as INFO, and OFF too, so that switching trace off never silences events.
  static void setLevel(const std::string& traceSpecification);

  /// Sets the detail for descriptors without a logger; OFF switches them off.
  static void setDebugLevel(const TraceLevel& level);

  /// @return whether `level` is not OFF and at or above the debug level.
  static bool isDebugOn(const TraceLevel& level);

  /// @return false until the first setLevel().
  static bool isTraceAvailable();

  static RASEnvironment getEnvironment();

  /// @return the log directory, empty until diagnostics are initialised. The reference stays valid for the process.
  static const std::string& getLogPath();

  /// @return the dotted prefix under which the names of a trace specification are read; may be empty.
  static std::string getTraceSpecNamePrefix();

  virtual ~RAS();

 private:
  friend struct RASTest;

  struct State;

  RAS();
  RAS(const RAS& other);
  RAS& operator=(const RAS& other);

  static RAS& getInstance();
  static LogLevel getLevel(const std::string& word);
  void applySpecification(const std::string& specification);
  void applyEntry(const std::string& entry);
  void addLoggers(const std::string& names, const LogLevel& level);
  void addFullTrace(const std::string& names);
  void addLogger(const std::string& name, const LogLevel& level);
  void discardTraceLoggers();

  State* state_;
};

}  // namespace tessel
