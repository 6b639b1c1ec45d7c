/// @file
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include <tessel/Export.h>
#include <tessel/JNITypes.h>
#include <tessel/RASEnvironment.h>
#include <tessel/TraceLevel.h>

namespace tessel {

class LogFileProperties;
class LogLevel;
class Logger;

/// Sets up and switches the diagnostics of the process.
///
/// initialize() installs the event log and prepares the trace files, setLevel() decides which classes are traced, and
/// shutdown() ends both. Every operation may be called from any thread; initialize() and shutdown() not from inside a
/// log handler. The queries take no lock.
class TESSEL_API RAS {
 public:
  /// Starts the event log, also shown on the console by DAEMON_FOREGROUND and UNITTEST, and prepares the trace files,
  /// which are opened when a class is traced. Failures to open them are reported by the handlers and not thrown.
  ///
  /// The directory of the failure captures is the property "com.kelvo.tessel.native.logdir" of NYXEnvironment.
  /// What setLevel() set before stays in force, with names read as they were then.
  ///
  /// A second call only changes what getEnvironment() returns, unless it says UNITTEST: then the former handlers are
  /// removed and everything is set up anew.
  ///
  /// @param traceSpecNamePrefix dotted prefix under which the names of trace specifications are read; may be empty.
  /// @throws PropertyNotFoundException when the log directory is not set; nothing has changed then. NYXException
  ///         KTBNV0008: the diagnostics are then not initialised, also if they were before.
  static void initialize(const RASEnvironment& environment, const LogFileProperties& eventLogProperties,
                         const LogFileProperties& traceProperties, const std::string& traceSpecNamePrefix);

  /// For Java processes: events and trace go to Java's own log, by a JavaEventLogHandler and a JavaTraceFileLogHandler.
  /// Otherwise as above, with a second call included.
  ///
  /// From then on no thread waits longer than a quarter of a second to write a trace point or a failure capture: the
  /// point is dropped, the capture goes to standard error. Trace points of setLevel() and of this operation that would
  /// come while they change the configuration are dropped, too.
  ///
  /// @param env of the calling thread; its machine gets the records.
  /// @param logDirectory the value of the property "com.kelvo.tessel.native.logdir", unless it has one already.
  /// @throws NYXException KTBNV0008: the diagnostics are then not initialised.
  static void initialize(const RASEnvironment& environment, JNIEnv* env, const std::string& logDirectory,
                         const std::string& traceSpecNamePrefix);

  /// Switches trace off, removes the handlers and destroys them when no thread is inside them any more. Everything is
  /// then as before the first initialize(). Without one, or twice, it does nothing.
  static void shutdown();

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

  /// @return the log directory, empty while diagnostics are not initialised. The reference and its text stay valid for
  ///         the process.
  static const std::string& getLogPath();

  /// @return the dotted prefix under which the names of a trace specification are read; may be empty.
  static std::string getTraceSpecNamePrefix();

  virtual ~RAS();

 private:
  friend struct RASTest;

  class Output;
  class AttachedOutput;
  struct Outputs;
  struct State;

  RAS();
  RAS(const RAS& other);
  RAS& operator=(const RAS& other);

  static RAS& getInstance();
  bool prepare(const RASEnvironment& environment);
  bool wouldInstall(const RASEnvironment& environment) const;
  void install(const RASEnvironment& environment, const std::string& prefix,
               const std::function<std::unique_ptr<Outputs>()>& makeOutputs);
  void reset();
  static LogLevel getLevel(const std::string& word);
  void applySpecification(const std::string& specification);
  void applyEntry(const std::string& entry);
  void addLoggers(const std::string& names, const LogLevel& level);
  void addFullTrace(const std::string& names);
  void addLogger(const std::string& name, const LogLevel& level);
  void discardTraceLoggers();
  static bool isTraceable(const Logger& logger);
  void attachTrace(const Logger& logger);

  static std::atomic<RAS*> existing;

  State* state_;
};

}  // namespace tessel
