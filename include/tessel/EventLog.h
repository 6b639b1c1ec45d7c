/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

class LogLevel;
class RasDescriptor;

/// Reports events to the operator. Texts are complete and translated already.
///
/// Events go to the handlers of the class's logger; without any handler those from WARNING up go to standard error.
/// A descriptor without a logger writes "DEBUG: " and the event to standard output. Any thread; nothing is thrown.
class TESSEL_API EventLog {
 public:
  /// An event of level CONFIG. @param message complete; copied. @param descriptor names class and logger.
  static void configNoFormat(const RasDescriptor& descriptor, const std::string& message);
  /// The same of level INFO.
  static void infoNoFormat(const RasDescriptor& descriptor, const std::string& message);
  /// The same of level WARNING.
  static void warningNoFormat(const RasDescriptor& descriptor, const std::string& message);
  /// The same of level SEVERE.
  static void errorNoFormat(const RasDescriptor& descriptor, const std::string& message);

  /// Never to be used: captured as a failure.
  EventLog(const EventLog& other);
  /// Never to be used: captured as a failure.
  EventLog& operator=(const EventLog& other);
  virtual ~EventLog();

 private:
  EventLog();

  static void logNoFormat(const RasDescriptor& descriptor, const LogLevel& level, const std::string& message);
};

}  // namespace tessel
