#include <tessel/RAS.h>

#include <atomic>
#include <map>
#include <memory>
#include <set>

#include <tessel/ConsoleLogHandler.h>
#include <tessel/EventLog.h>
#include <tessel/EventLogHandler.h>
#include <tessel/FFDC.h>
#include <tessel/JavaEventLogHandler.h>
#include <tessel/JavaTraceFileLogHandler.h>
#include <tessel/Logger.h>
#include <tessel/NLS.h>
#include <tessel/NYXEnvironment.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/ResourceBundle.h>
#include <tessel/TraceFileLogHandler.h>

#include "internal/Bundles.h"
#include "internal/DiagnosticsLock.h"
#include "internal/MethodTrace.h"
#include "internal/TraceSpecification.h"
#include "internal/TraceSwitch.h"

namespace tessel {

std::atomic<bool> internal::traceSwitch{false};
std::atomic<bool> internal::traceAvailable{false};
std::atomic<bool> internal::traceEverOn{false};

namespace {

const RasDescriptor rd("RAS", internal::kMessages);

using internal::traceAvailable;

std::atomic<int> debugLevel{TraceLevel::OFF};

// Under the lock, so that of two changes the later one decides.
void refreshSwitch() {
  const bool on = traceAvailable.load() || debugLevel.load() != TraceLevel::OFF;
  if (on) internal::traceEverOn = true;
  internal::traceSwitch = on;
}

constexpr const char* kLogDirectory = "com.kelvo.tessel.native.logdir";

// Each text that was ever a prefix or a log path lives for the process: readers take no lock, and keep references.
// Called under the lock.
const std::string* kept(const std::string& text) {
  static std::set<std::string>& texts = *new std::set<std::string>;
  return &*texts.insert(text).first;
}

const std::string& emptyText() {
  static const std::string& text = *new std::string;
  return text;
}

// Outside the singleton, which these queries do not create; null until diagnostics are initialised.
std::atomic<const std::string*> specNamePrefix{nullptr};
std::atomic<const std::string*> logPath{nullptr};

const std::string& textOf(const std::atomic<const std::string*>& text) {
  const std::string* value = text.load(std::memory_order_acquire);
  return value ? *value : emptyText();
}

// A thread that traces may need both catalogues: they are read before the first trace point can be on.
void fetchCatalogues() {
  ResourceBundle::getBundle(internal::messagesBundle());
  ResourceBundle::getBundle(internal::elementsBundle());
}

// Holds the singleton's lock for a scope.
struct StateLock {
  explicit StateLock(NYXThreadSync& sync) : guard(sync) {}
  const internal::NoTraceInJava mark;
  const internal::DiagnosticsLock guard;
};

bool wantsConsole(const RASEnvironment& environment) {
  return environment == RASEnvironment::DAEMON_FOREGROUND || environment == RASEnvironment::UNITTEST;
}

}  // namespace

const std::string& internal::traceSpecNamePrefix() noexcept { return textOf(specNamePrefix); }

// A handler that sits on the root logger while it is attached.
class RAS::Output {
 public:
  explicit Output(std::unique_ptr<LogHandler> handler) : handler_(std::move(handler)) {}
  // Returns when no other thread is inside the handler any more.
  ~Output() {
    if (handler_) Logger::getLogger(std::string())->removeHandler(*handler_);
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void attach() {
    if (attached_ || !handler_) return;
    Logger::getLogger(std::string())->addHandler(*handler_);
    attached_ = true;
  }

  // Does not wait for threads that are inside the handler: they may be in Java code that is about to set the level.
  void detach() {
    if (attached_) Logger::getLogger(std::string())->unlistHandler(*handler_);
    attached_ = false;
  }

 private:
  std::unique_ptr<LogHandler> handler_;
  bool attached_ = false;
};

// In use from its construction: the next one may report failures to it.
class RAS::AttachedOutput : public Output {
 public:
  explicit AttachedOutput(std::unique_ptr<LogHandler> handler) : Output(std::move(handler)) { attach(); }
};

struct RAS::Outputs {
  AttachedOutput event;
  AttachedOutput console;
  Output trace;

  // Made one after the other, each by a call of its maker.
  template <class MakeEvent, class MakeTrace>
  Outputs(const RASEnvironment& environment, MakeEvent makeEvent, MakeTrace makeTrace)
      : event(makeEvent()),
        console(wantsConsole(environment) ? std::make_unique<ConsoleLogHandler>() : nullptr),
        trace(makeTrace()) {}
};

struct RAS::State {
  NYXThreadSyncImpl lock;
  std::atomic<int> environment{RASEnvironment::UNSPECIFIED};
  std::map<std::string, Logger*> traceLoggers;  // guarded by lock
  std::unique_ptr<Outputs> outputs;             // guarded by lock; null until initialised

  // As before initialize, apart from what specifications have set.
  void takeBack() {
    outputs.reset();
    internal::setJavaProcess(false);
    environment = RASEnvironment::UNSPECIFIED;
    specNamePrefix = nullptr;
    logPath = nullptr;
  }
};

RAS::RAS() : state_(new State) {}

RAS::~RAS() { delete state_; }

RAS::RAS(const RAS&) : RAS() {
  const NYXException failure("RAS copy constructor should never be called!");
  FFDC::capture(rd, "RAS", FFDC::PROBE_001(), &failure);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): nothing is ever assigned
RAS& RAS::operator=(const RAS&) {
  const NYXException failure("RAS assignment operator should never be called!");
  FFDC::capture(rd, "operator=", FFDC::PROBE_002(), &failure);
  return *this;
}

std::atomic<RAS*> RAS::existing{nullptr};

RAS& RAS::getInstance() {
  static RAS& instance = *new RAS;
  existing = &instance;
  return instance;
}

// The former handlers go before the new ones are made, since they hold the names.
void RAS::initialize(const RASEnvironment& environment, const LogFileProperties& eventLogProperties,
                     const LogFileProperties& traceProperties, const std::string& traceSpecNamePrefix) {
  fetchCatalogues();
  getInstance().install(environment, traceSpecNamePrefix, [&] {
    return std::make_unique<Outputs>(
        environment, [&] { return std::make_unique<EventLogHandler>(eventLogProperties); },
        [&] { return std::make_unique<TraceFileLogHandler>(traceProperties); });
  });
}

// Here the new handlers come first: the static initialisers of the Java classes may call back.
void RAS::initialize(const RASEnvironment& environment, JNIEnv* env, const std::string& logDirectory,
                     const std::string& traceSpecNamePrefix) {
  NYXEnvironment::setProperty(kLogDirectory, logDirectory);
  fetchCatalogues();
  std::unique_ptr<LogHandler> event;
  std::unique_ptr<LogHandler> trace;
  if (getInstance().prepare(environment)) {
    event = std::make_unique<JavaEventLogHandler>(env);
    trace = std::make_unique<JavaTraceFileLogHandler>(env);
  }
  getInstance().install(environment, traceSpecNamePrefix, [&] {
    internal::setJavaProcess(true);
    return std::make_unique<Outputs>(
        environment, [&] { return std::move(event); }, [&] { return std::move(trace); });
  });
}

// What the new handlers report while they are made has its file.
bool RAS::prepare(const RASEnvironment& environment) {
  const StateLock lock(state_->lock);
  if (!wouldInstall(environment)) return false;
  logPath = kept(NYXEnvironment::getProperty(kLogDirectory));
  return true;
}

bool RAS::wouldInstall(const RASEnvironment& environment) const {
  const StateLock lock(state_->lock);
  return !state_->outputs || environment == RASEnvironment::UNITTEST;
}

// A missing log directory changes nothing.
void RAS::install(const RASEnvironment& environment, const std::string& prefix,
                  const std::function<std::unique_ptr<Outputs>()>& makeOutputs) {
  const internal::MethodTrace trace(rd, this, "initialize", environment, prefix);
  const StateLock lock(state_->lock);
  if (!wouldInstall(environment)) {
    state_->environment = environment.getValue();
    return;
  }
  const std::string* path = kept(NYXEnvironment::getProperty(kLogDirectory));
  const std::string* keptPrefix = kept(prefix);
  state_->takeBack();
  state_->environment = environment.getValue();
  specNamePrefix = keptPrefix;
  logPath = path;  // for the failures that the handlers capture while they are made
  try {
    state_->outputs = makeOutputs();
    for (const auto& [key, logger] : state_->traceLoggers) attachTrace(*logger);
  } catch (...) {
    state_->takeBack();
    throw;
  }
}

void RAS::shutdown() {
  if (RAS* instance = existing) instance->reset();
}

void RAS::reset() {
  const internal::MethodTrace trace(rd, this, "shutdown");
  const StateLock lock(state_->lock);
  discardTraceLoggers();
  traceAvailable = false;
  debugLevel = TraceLevel::OFF;
  refreshSwitch();
  state_->takeBack();
}

void RAS::setLevel(const std::string& traceSpecification) {
  fetchCatalogues();
  getInstance().applySpecification(traceSpecification);
}

void RAS::applySpecification(const std::string& specification) {
  const internal::MethodTrace trace(rd, this, "setLevel", specification);
  const StateLock lock(state_->lock);
  const bool adds = !specification.empty() && specification.front() == '+';
  if (!adds) discardTraceLoggers();
  const std::string entries = adds ? specification.substr(1) : specification;
  for (const std::string& entry : internal::nonEmptyParts(entries, ':')) applyEntry(entry);
  if (state_->environment != RASEnvironment::JAVA_APP) {
    EventLog::infoNoFormat(rd, NLS::format(rd, "KTBNV0018_TRACE_CHANGE", specification));
  }
  traceAvailable = true;
  refreshSwitch();
}

void RAS::applyEntry(const std::string& entry) {
  const std::size_t equals = entry.find('=', 1);
  if (equals != std::string::npos) {
    addLoggers(entry.substr(0, equals), getLevel(entry.substr(equals + 1)));
  } else if (entry.front() == '=') {
    addLogger(std::string(), getLevel(entry.substr(1)));
  } else {
    addFullTrace(entry);
  }
}

void RAS::addLoggers(const std::string& names, const LogLevel& level) {
  for (const std::string& name : internal::nonEmptyParts(names, ',')) addLogger(name, level);
}

void RAS::addFullTrace(const std::string& names) {
  const internal::MethodTrace trace(rd, this, "addFullTrace", names);
  for (const std::string& name : internal::nonEmptyParts(names, ',')) {
    trace.data(TraceLevel::MODERATE, "addLogger for key: " + name);
    addLogger(name, LogLevel::ALL);
  }
}

void RAS::addLogger(const std::string& name, const LogLevel& level) {
  std::string key;
  if (!internal::relativeName(name, textOf(specNamePrefix), key)) return;
  Logger* logger = Logger::getLogger(key);
  logger->setLevel(level);
  state_->traceLoggers.emplace(key, logger);
  attachTrace(*logger);
}

bool RAS::isTraceable(const Logger& logger) { return logger.isLoggable(LogLevel::FINE); }

// Once, to the root: the levels of the trace loggers decide what reaches it.
void RAS::attachTrace(const Logger& logger) {
  if (state_->outputs && isTraceable(logger)) state_->outputs->trace.attach();
}

// INFO, the level that every logger starts with: switching trace off must not silence events. The map is ordered
// by name, so that the root comes first.
void RAS::discardTraceLoggers() {
  for (const auto& [key, logger] : state_->traceLoggers) logger->setLevel(LogLevel::INFO);
  state_->traceLoggers.clear();
  if (state_->outputs) state_->outputs->trace.detach();
}

LogLevel RAS::getLevel(const std::string& word) {
  static const std::map<std::string, LogLevel::LogLevelValue>& levels =
      *new std::map<std::string, LogLevel::LogLevelValue>{
          {"OFF", LogLevel::INFO},        {"INFO", LogLevel::INFO},    {"CONFIG", LogLevel::CONFIG},
          {"WARNING", LogLevel::WARNING}, {"ERROR", LogLevel::SEVERE}, {"SEVERE", LogLevel::SEVERE},
          {"FATAL", LogLevel::SEVERE},    {"ALL", LogLevel::ALL},      {"VERBOSE", LogLevel::FINEST},
          {"MODERATE", LogLevel::FINER},  {"FLOW", LogLevel::FINE}};
  const auto known = levels.find(internal::upperCase(word));
  return known == levels.end() ? LogLevel::INFO : known->second;
}

void RAS::setDebugLevel(const TraceLevel& level) {
  fetchCatalogues();
  const StateLock lock(getInstance().state_->lock);
  debugLevel = level.getValue();
  refreshSwitch();
}

bool internal::debugIsOn(int level) noexcept {
  return level != TraceLevel::OFF && level >= debugLevel.load(std::memory_order_relaxed);
}

bool RAS::isDebugOn(const TraceLevel& level) { return internal::debugIsOn(level.getValue()); }

bool RAS::isTraceAvailable() { return traceAvailable.load(std::memory_order_relaxed); }

RASEnvironment RAS::getEnvironment() {
  return static_cast<RASEnvironment::RASEnvironmentValue>(getInstance().state_->environment.load());
}

const std::string& RAS::getLogPath() { return textOf(logPath); }

std::string RAS::getTraceSpecNamePrefix() { return internal::traceSpecNamePrefix(); }

}  // namespace tessel
