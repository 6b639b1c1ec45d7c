#include <tessel/LogRecord.h>

#include <limits>
#include <ostream>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Synchronize.h>

#include "internal/Bundles.h"
#include "internal/Digits.h"
#include "internal/LocalClock.h"
#include "internal/PlatformServices.h"

namespace tessel {
namespace {

const RasDescriptor rd("LogRecord", internal::kMessages);

constexpr unsigned kClassColumn = 52;
constexpr unsigned kDataColumn = 123;
constexpr unsigned kTraceClassWidth = 70;
constexpr unsigned kEventClassWidth = 13;

// Null when the lock could not be created: records are then counted without it.
NYXThreadSync* recordLock() {
  static NYXThreadSync* const lock = []() -> NYXThreadSync* {
    try {
      return new NYXThreadSyncImpl;
    } catch (const NYXException&) {
      return nullptr;
    }
  }();
  return lock;
}

struct Stamp {
  std::int64_t time;
  std::uint32_t sequence;
};

// The time is read inside the lock, so that the numbers of a second start twice only if the clock is set back, and once
// for each step of the system's coarse clock: for the length of a step a record may still show the second before.
Stamp nextStamp() {
  static std::uint64_t lastTick = std::numeric_limits<std::uint64_t>::max();
  static std::int64_t lastTime = 0;
  static std::uint32_t counter = 0;
  const Synchronize guard(recordLock());
  const std::uint64_t tick = internal::clockTick();
  const std::int64_t now = tick == lastTick ? lastTime : internal::currentTime();
  lastTick = tick;
  counter = now == lastTime ? counter + 1 : 0;
  lastTime = now;
  return {now, counter};
}

void appendColumn(std::string& line, const std::string& text, unsigned width) {
  line.append(text, 0, width);
  if (text.size() < width) line.append(width - text.size(), ' ');
}

void padTo(std::string& line, unsigned column) { line.resize(column, ' '); }

void appendObject(std::string& line, const void* object) {
  if (!object) {
    line += "           static";
    return;
  }
  line += '@';
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): an address is shown as a number
  internal::appendHex<16>(line, reinterpret_cast<std::uintptr_t>(object));
}

}  // namespace

LogRecord::LogRecord(const LogLevel& level, const LogRecordType& type, const std::string& message)
    : level_(level), type_(type), message_(message) {
  const Stamp stamp = nextStamp();
  logTime_ = stamp.time;
  sequence_ = stamp.sequence;
}

LogRecord::LogRecord(const LogRecord& other) = default;
LogRecord::~LogRecord() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): nothing is ever assigned
LogRecord& LogRecord::operator=(const LogRecord&) {
  const NYXException failure("not supported!");
  FFDC::capture(rd, "operator=", FFDC::PROBE_001(), &failure);
  return *this;
}

const LogLevel& LogRecord::getLogLevel() const { return level_; }
const LogRecordType& LogRecord::getType() const { return type_; }
const std::string& LogRecord::getSourceClassName() const { return sourceClassName_; }
const std::string& LogRecord::getSourceMethodName() const { return sourceMethodName_; }
std::string LogRecord::getMessage() const { return message_; }
const void* LogRecord::getObjectReference() const { return objectReference_; }
std::int64_t LogRecord::getLogTime() const { return logTime_; }
unsigned long LogRecord::getThreadId() const { return threadId_; }
unsigned LogRecord::getNumArguments() const { return numArguments_; }

std::string LogRecord::getArgument(unsigned index) const {
  return index < numArguments_ && index < kMaxArguments ? arguments_.at(index) : std::string();
}

const std::string& LogRecord::getMethodReturnType() const { return methodReturnType_; }
const NYXException* LogRecord::getThrown() const { return thrown_; }

void LogRecord::setSourceClassName(const std::string& name) { sourceClassName_ = name; }
void LogRecord::setSourceMethodName(const std::string& name) { sourceMethodName_ = name; }
void LogRecord::setObjectReference(const void* object) { objectReference_ = object; }
void LogRecord::setThreadId(unsigned long threadId) { threadId_ = static_cast<std::uint32_t>(threadId); }

void LogRecord::setArguments(unsigned count, std::string* args) {
  numArguments_ = count;
  for (unsigned i = 0; i < count && i < kMaxArguments; ++i) arguments_.at(i) = args[i];
}

void LogRecord::setMethodReturnType(const std::string& type) { methodReturnType_ = type; }
void LogRecord::setThrown(const NYXException* thrown) { thrown_ = thrown; }

void LogRecord::appendTimestamp(std::string& text) const {
  text += internal::localClock(logTime_).timeText();
  text += '.';
  internal::appendDecimal<3>(text, sequence_ / 256);
  text += '.';
  internal::appendHex<2>(text, sequence_ % 256, "0123456789ABCDEF");
}

void LogRecord::appendDateTimestamp(std::string& text) const {
  const internal::LocalClock& clock = internal::localClock(logTime_);
  text += clock.date.data();
  text += ' ';
  text += clock.timeText();
  text += '.';
  internal::appendDecimal<3>(text, sequence_ / 256);
  text += ' ';
  text += clock.zone.data();
}

std::string LogRecord::getTimestamp() const {
  std::string text;
  appendTimestamp(text);
  return text;
}

std::string LogRecord::getDateTimestamp() const {
  std::string text;
  appendDateTimestamp(text);
  return text;
}

std::string LogRecord::getLogRecordOutputHeader() {
  constexpr unsigned kThreadColumn = 17;
  constexpr unsigned kObjectColumn = 34;
  constexpr unsigned kRuleLength = 166;
  std::string header = "TimeStamp";
  padTo(header, kThreadColumn);
  header += "TID";
  padTo(header, kObjectColumn);
  header += "ObjectId";
  padTo(header, kClassColumn);
  header += "Class";
  padTo(header, kDataColumn);
  return header + "Data\n" + std::string(kRuleLength, '=');
}

void LogRecord::appendMethod(std::string& text) const {
  text += message_;
  text += ' ';
  text += sourceMethodName_;
}

void LogRecord::appendArguments(std::string& text) const {
  for (unsigned i = 0; i < numArguments_; ++i) {
    if (i > 0) text += ' ';
    text += '[';
    if (i < kMaxArguments) text += arguments_.at(i);
    text += ']';
  }
}

void LogRecord::appendMessage(std::string& text) const { text += getMessage(); }

void LogRecord::appendTo(std::string& line) const {
  if (type_ == LogRecordType::EVENT) {
    line += '[';
    appendDateTimestamp(line);
    line += "]  ";
    internal::appendHex<16>(line, threadId_);
    line += ' ';
    appendColumn(line, sourceClassName_, kEventClassWidth);
    line += ' ';
    line += level_.getIndicator();
  } else {
    appendTimestamp(line);
    line += "  ";
    internal::appendHex<16>(line, threadId_);
    line += ' ';
    appendObject(line, objectReference_);
    line += ' ';
    appendColumn(line, sourceClassName_, kTraceClassWidth);
  }
  line += ' ';
  appendMessage(line);
}

std::ostream& operator<<(std::ostream& stream, const LogRecord& record) {
  std::string line;
  record.appendTo(line);
  return stream << line;
}

}  // namespace tessel
