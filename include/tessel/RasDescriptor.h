/// @file
#pragma once

#include <string>

#include <tessel/Export.h>
#include <tessel/TraceLevel.h>

namespace tessel {

class Logger;

/// Names a class to the diagnostics: its logger, its name in trace, the catalogue of its messages.
///
/// Every class holds one as a static object. Immutable apart from assignment; may be read from any thread.
class TESSEL_API RasDescriptor {
 public:
  /// The logger is the one named after the class, created when it does not exist yet.
  RasDescriptor(const std::string& className, const std::string& messageBundle);
  /// @param logger not owned; null makes a debug descriptor.
  RasDescriptor(const std::string& className, const std::string& messageBundle, Logger* logger);
  /// As the first form, without a catalogue.
  explicit RasDescriptor(const std::string& className);
  /// @param logger not owned; null makes a debug descriptor.
  RasDescriptor(const std::string& className, Logger* logger);
  /// A debug descriptor without name and catalogue.
  RasDescriptor();
  RasDescriptor(const RasDescriptor& other);
  RasDescriptor& operator=(const RasDescriptor& other);
  virtual ~RasDescriptor();

  /// @return the class as it is shown in trace and events.
  std::string getClassName() const;
  /// @return the dotted name of the catalogue; may be empty.
  std::string getMessageBundle() const;
  /// @return the logger, not owned; null for a debug descriptor.
  Logger* getLogger() const;

  /// @return whether there is no logger: records then go straight to standard output.
  bool isDebug() const;

  /// @return whether a trace point of that detail is wanted now. Takes no lock. A debug descriptor asks
  ///         RAS::isDebugOn only; any other needs trace to be available and its logger's level.
  bool isOn(const TraceLevel& level) const;

  /// isOn(TraceLevel::FLOW).
  bool isFlowOn() const;

 private:
  friend class NLS;
  friend class Trace;

  bool isOnAt(int level) const;

  Logger* logger_;
  std::string className_;
  std::string messageBundle_;
};

}  // namespace tessel
