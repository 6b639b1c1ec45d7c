#include <tessel/Logger.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include <tessel/LogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

#include "internal/DiagnosticsLock.h"
#include "internal/StandardStreams.h"
#include "internal/ThreadState.h"

namespace tessel {
namespace {

LogLevel levelOf(int value) { return static_cast<LogLevel::LogLevelValue>(value); }

}  // namespace

// The lock is a leaf: nothing is called while it is held.
struct Logger::Registry {
  NYXThreadSyncImpl lock;
  std::map<std::string, Logger*> loggers;
};

// The handlers of one logger while this thread publishes to them, one after the other. Each is counted as in use
// from before the registry's lock is left until its turn is over, so that removeHandler cannot miss it.
class Logger::Publication {
 public:
  explicit Publication(std::shared_ptr<const Handlers> handlers)
      : Publication(std::move(handlers), internal::threadState()) {}
  ~Publication() { innermost_ = outer_; }
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;

  // Returns whether there was any handler.
  bool publish(LogRecord& record) {
    for (turn_ = 0; turn_ < handlers_->size(); ++turn_) {
      LogHandler* handler = (*handlers_)[turn_];
      if (std::find(dropped_.begin(), dropped_.end(), handler) != dropped_.end()) continue;
      publishTo(*handler, record);
      handler->users_.fetch_sub(1, std::memory_order_release);
    }
    return !handlers_->empty();
  }

  // Takes the handler out of everything that this thread has still to publish, and tells in how many turns of
  // this thread it is right now: the thread must not wait for itself.
  static unsigned drop(LogHandler& handler) {
    unsigned turns = 0;
    for (auto* p = static_cast<Publication*>(internal::threadState().publication); p; p = p->outer_) {
      turns += p->dropHere(handler);
    }
    return turns;
  }

 private:
  Publication(std::shared_ptr<const Handlers> handlers, internal::ThreadState& thread)
      : handlers_(std::move(handlers)),
        innermost_(thread.publication),
        outer_(static_cast<Publication*>(innermost_)),
        mark_(thread) {
    innermost_ = this;
  }

  static void publishTo(LogHandler& handler, LogRecord& record) {
    try {
      handler.publish(record);
    } catch (...) {  // NOLINT(bugprone-empty-catch): a failing output never reaches who logs
    }
  }

  unsigned dropHere(LogHandler& handler) {
    if (std::find(dropped_.begin(), dropped_.end(), &handler) == dropped_.end()) {
      dropped_.push_back(&handler);
      const auto pending =
          std::count(handlers_->begin() + static_cast<std::ptrdiff_t>(turn_) + 1, handlers_->end(), &handler);
      handler.users_.fetch_sub(static_cast<unsigned>(pending), std::memory_order_release);
    }
    return (*handlers_)[turn_] == &handler ? 1 : 0;
  }

  const std::shared_ptr<const Handlers> handlers_;
  std::vector<LogHandler*> dropped_;
  std::size_t turn_ = 0;
  void*& innermost_;  // the thread's own
  Publication* const outer_;
  const internal::NoBlockingTrace mark_;
};

Logger::Registry& Logger::registry() {
  static Registry& instance = *new Registry;
  return instance;
}

Logger* Logger::getLogger(const std::string& name) {
  Registry& all = registry();
  const Synchronize guard(&all.lock);
  const auto known = all.loggers.find(name);
  if (known != all.loggers.end()) return known->second;
  auto* logger = new Logger(name);
  logger->link(all);
  all.loggers.emplace(name, logger);
  return logger;
}

Logger::Logger(const std::string& name)
    : name_(name), logHandlers_(std::make_shared<const Handlers>()), level_(LogLevel::INFO), parent_(nullptr) {}

Logger::~Logger() {
  Registry& all = registry();
  const Synchronize guard(&all.lock);
  if (Logger* parent = parent_) parent->childLoggers_.remove(this);
  all.loggers.erase(name_);
}

// A descendant stays in the child lists of all its ancestors: setLevel on any of them reaches it. Names are looked up
// rather than compared one by one, since a specification may name thousands.
void Logger::link(Registry& all) {
  if (name_.empty()) {
    for (const auto& [name, other] : all.loggers) {
      if (!other->parent_) adopt(*other);
    }
    return;
  }
  // Farthest first, so that the nearest ancestor ends as the parent.
  for (std::size_t dot = name_.find('.'); dot != std::string::npos; dot = name_.find('.', dot + 1)) {
    const auto ancestor = all.loggers.find(name_.substr(0, dot));
    if (ancestor != all.loggers.end()) ancestor->second->adopt(*this);
  }
  const std::string start = name_ + '.';
  for (auto below = all.loggers.lower_bound(start);
       below != all.loggers.end() && below->first.compare(0, start.size(), start) == 0; ++below) {
    adopt(*below->second);
  }
  const auto root = all.loggers.find(std::string());
  if (!parent_ && root != all.loggers.end()) root->second->adopt(*this);
}

void Logger::adopt(Logger& child) {
  child.parent_ = this;
  childLoggers_.push_back(&child);
}

void Logger::addHandler(LogHandler& handler) {
  const Synchronize guard(&registry().lock);
  auto handlers = std::make_shared<Handlers>(*logHandlers_);
  handlers->push_back(&handler);
  logHandlers_ = std::move(handlers);
  hasHandlers_ = true;
}

void Logger::unlistHandler(const LogHandler& handler) {
  const Synchronize guard(&registry().lock);
  auto handlers = std::make_shared<Handlers>(*logHandlers_);
  handlers->erase(std::remove(handlers->begin(), handlers->end(), &handler), handlers->end());
  hasHandlers_ = !handlers->empty();
  logHandlers_ = std::move(handlers);
}

void Logger::removeHandler(LogHandler& handler) {
  unlistHandler(handler);
  const unsigned own = Publication::drop(handler);
  while (handler.users_.load(std::memory_order_acquire) > own) std::this_thread::yield();
}

void Logger::setLevel(const LogLevel& level) {
  const Synchronize guard(&registry().lock);
  std::set<Logger*> visited;
  std::vector<Logger*> open{this};
  while (!open.empty()) {
    Logger* logger = open.back();
    open.pop_back();
    if (!visited.insert(logger).second) continue;
    logger->level_.store(level.getValue(), std::memory_order_relaxed);
    open.insert(open.end(), logger->childLoggers_.begin(), logger->childLoggers_.end());
  }
}

bool Logger::isLoggable(const LogLevel& level) const { return passes(level.getValue()); }

Logger* Logger::getParent() { return parent_; }

std::shared_ptr<const Logger::Handlers> Logger::borrowHandlers() {
  const Synchronize guard(&registry().lock);
  for (LogHandler* handler : *logHandlers_) handler->users_.fetch_add(1, std::memory_order_relaxed);
  return logHandlers_;
}

void Logger::log(LogRecord& record) {
  if (!isLoggable(record.getLogLevel())) return;
  bool handled = false;
  for (Logger* logger = this; logger; logger = logger->parent_) {
    if (!logger->hasHandlers_.load(std::memory_order_relaxed)) continue;
    handled = Publication(logger->borrowHandlers()).publish(record) || handled;
  }
  if (!handled && record.getLogLevel() >= LogLevel::WARNING) {
    std::ostringstream line;
    line << record << '\n';
    internal::print(std::cerr, line.str());
  }
}

std::ostream& operator<<(std::ostream& stream, const Logger& logger) {
  std::size_t handlers = 0;
  std::size_t children = 0;
  {
    const Synchronize guard(&Logger::registry().lock);
    handlers = logger.logHandlers_->size();
    children = logger.childLoggers_.size();
  }
  return stream << "Logger:" << logger.name_ << "(parent: " << static_cast<const void*>(logger.parent_.load())
                << ", level: " << levelOf(logger.level_) << ", logHandlers.size(): " << handlers
                << ", childLoggers.size(): " << children << ")";
}

}  // namespace tessel
