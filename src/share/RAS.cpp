#include <tessel/RAS.h>

#include <atomic>
#include <map>
#include <sstream>
#include <vector>

#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/Logger.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/ResourceBundle.h>

#include "internal/Bundles.h"
#include "internal/DiagnosticsLock.h"
#include "internal/MethodTrace.h"
#include "internal/TraceSwitch.h"

namespace tessel {

std::atomic<bool> internal::traceSwitch{false};
std::atomic<bool> internal::traceEverOn{false};

namespace {

const RasDescriptor rd("RAS", internal::kMessages);

std::atomic<bool> traceAvailable{false};
std::atomic<int> debugLevel{TraceLevel::OFF};

// Under the lock, so that of two changes the later one decides.
void refreshSwitch() {
  const bool on = traceAvailable.load() || debugLevel.load() != TraceLevel::OFF;
  if (on) internal::traceEverOn = true;
  internal::traceSwitch = on;
}

// Outside the singleton, which these queries do not create. Empty until diagnostics are initialised.
const std::string& traceSpecNamePrefix() {
  static const std::string& prefix = *new std::string;
  return prefix;
}

const std::string& logPath() {
  static const std::string& path = *new std::string;
  return path;
}

// A thread that traces may need both catalogues: they are read before the first trace point can be on.
void fetchCatalogues() {
  ResourceBundle::getBundle(internal::messagesBundle());
  ResourceBundle::getBundle(internal::elementsBundle());
}

std::string upperCase(const std::string& word) {
  std::string upper = word;
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

// The parts that are not empty.
std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    if (!part.empty()) parts.push_back(part);
  }
  return parts;
}

// The name below the prefix; false when the name is outside it.
bool relativeName(const std::string& name, const std::string& prefix, std::string& key) {
  const auto startsWith = [](const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
  };
  if (name.empty() || startsWith(prefix, name + ".") || name == prefix) {
    key.clear();
  } else if (startsWith(name, prefix + ".")) {
    key = name.substr(prefix.size() + 1);
  } else if (startsWith(name, prefix)) {
    key = name.substr(prefix.size());
  } else {
    return false;
  }
  return true;
}

}  // namespace

struct RAS::State {
  NYXThreadSyncImpl lock;
  std::atomic<RASEnvironment::RASEnvironmentValue> environment{RASEnvironment::UNSPECIFIED};
  std::map<std::string, Logger*> traceLoggers;  // guarded by lock
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

RAS& RAS::getInstance() {
  static RAS& instance = *new RAS;
  return instance;
}

void RAS::setLevel(const std::string& traceSpecification) {
  fetchCatalogues();
  getInstance().applySpecification(traceSpecification);
}

void RAS::applySpecification(const std::string& specification) {
  const internal::MethodTrace trace(rd, this, "setLevel", specification);
  const internal::DiagnosticsLock guard(state_->lock);
  const bool adds = !specification.empty() && specification.front() == '+';
  if (!adds) discardTraceLoggers();
  for (const std::string& entry : split(adds ? specification.substr(1) : specification, ':')) applyEntry(entry);
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
  for (const std::string& name : split(names, ',')) addLogger(name, level);
}

void RAS::addFullTrace(const std::string& names) {
  const internal::MethodTrace trace(rd, this, "addFullTrace", names);
  for (const std::string& name : split(names, ',')) {
    trace.data(TraceLevel::MODERATE, "addLogger for key: " + name);
    addLogger(name, LogLevel::ALL);
  }
}

void RAS::addLogger(const std::string& name, const LogLevel& level) {
  std::string key;
  if (!relativeName(name, traceSpecNamePrefix(), key)) return;
  Logger* logger = Logger::getLogger(key);
  logger->setLevel(level);
  state_->traceLoggers.emplace(key, logger);
}

// INFO, the level that every logger starts with: switching trace off must not silence events. The map is ordered
// by name, so that the root comes first.
void RAS::discardTraceLoggers() {
  for (const auto& [key, logger] : state_->traceLoggers) logger->setLevel(LogLevel::INFO);
  state_->traceLoggers.clear();
}

LogLevel RAS::getLevel(const std::string& word) {
  static const std::map<std::string, LogLevel::LogLevelValue>& levels =
      *new std::map<std::string, LogLevel::LogLevelValue>{
          {"OFF", LogLevel::INFO},        {"INFO", LogLevel::INFO},    {"CONFIG", LogLevel::CONFIG},
          {"WARNING", LogLevel::WARNING}, {"ERROR", LogLevel::SEVERE}, {"SEVERE", LogLevel::SEVERE},
          {"FATAL", LogLevel::SEVERE},    {"ALL", LogLevel::ALL},      {"VERBOSE", LogLevel::FINEST},
          {"MODERATE", LogLevel::FINER},  {"FLOW", LogLevel::FINE}};
  const auto known = levels.find(upperCase(word));
  return known == levels.end() ? LogLevel::INFO : known->second;
}

void RAS::setDebugLevel(const TraceLevel& level) {
  fetchCatalogues();
  const internal::DiagnosticsLock guard(getInstance().state_->lock);
  debugLevel = level.getValue();
  refreshSwitch();
}

bool RAS::isDebugOn(const TraceLevel& level) {
  return level != TraceLevel::OFF && level.getValue() >= debugLevel.load(std::memory_order_relaxed);
}

bool RAS::isTraceAvailable() { return traceAvailable.load(std::memory_order_relaxed); }

RASEnvironment RAS::getEnvironment() { return getInstance().state_->environment.load(); }

const std::string& RAS::getLogPath() { return logPath(); }

std::string RAS::getTraceSpecNamePrefix() { return traceSpecNamePrefix(); }

}  // namespace tessel
