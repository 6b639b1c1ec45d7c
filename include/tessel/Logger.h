/// @file
#pragma once

#include <atomic>
#include <iosfwd>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <tessel/Export.h>
#include <tessel/LogLevel.h>

namespace tessel {

class LogHandler;
class LogRecord;

/// A named node in the process-wide tree of loggers.
///
/// Names are dotted; the root has the empty name. A record logged here goes to the handlers of this logger and of
/// every ancestor. Loggers live for the process. Every operation may be called from any thread while others log.
class TESSEL_API Logger {
 public:
  /// @return the logger of that name, made and linked when it does not exist yet; never null.
  static Logger* getLogger(const std::string& name);

  Logger(const Logger& other) = delete;
  Logger& operator=(const Logger& other) = delete;
  /// Takes the logger out of its parent's children and out of the registry. Handlers and children stay.
  virtual ~Logger();

  /// Appends the handler, also when it is there already. @param handler borrowed: remove it before it dies.
  void addHandler(LogHandler& handler);

  /// Removes every occurrence of the handler. Returns only when no other thread can be inside it any more.
  void removeHandler(LogHandler& handler);

  /// Sets the level of this logger and of every logger below it.
  void setLevel(const LogLevel& level);

  /// @return whether a record of that level passes this logger. Takes no lock.
  bool isLoggable(const LogLevel& level) const;

  /// @return the nearest ancestor, or null.
  Logger* getParent();

  /// Publishes the record unless its level is below this logger's. The ancestors' levels are not asked; each
  /// handler applies its own. With no handler on the whole way a record from WARNING up is written to standard
  /// error. Never throws.
  void log(LogRecord& record);

 protected:
  explicit Logger(const std::string& name);

 private:
  friend class RAS;
  friend class RasDescriptor;
  friend TESSEL_API std::ostream& operator<<(std::ostream& stream, const Logger& logger);

  using Handlers = std::vector<LogHandler*>;
  class Publication;
  struct Registry;

  bool passes(int level) const { return level >= level_.load(std::memory_order_relaxed); }

  static Registry& registry();
  void link(Registry& registry);
  // As removeHandler, but other threads may still be inside the handler.
  void unlistHandler(const LogHandler& handler);
  void adopt(Logger& child);
  std::shared_ptr<const Handlers> borrowHandlers();

  const std::string name_;
  std::shared_ptr<const Handlers> logHandlers_;  // replaced, never changed; the pointer is guarded by the registry
  std::atomic<bool> hasHandlers_{false};
  std::atomic<int> level_;
  std::atomic<Logger*> parent_;
  std::list<Logger*> childLoggers_;  // guarded by the registry's lock
};

/// Writes name, parent's address, level and the numbers of handlers and children.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const Logger& logger);

}  // namespace tessel
