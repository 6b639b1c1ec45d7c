#include <tessel/LogRecord.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <ostream>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Synchronize.h>

#include "internal/Bundles.h"
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

// The time is read inside the lock, so that the numbers of one second never start twice.
Stamp nextStamp() {
  static std::int64_t lastTime = 0;
  static std::uint32_t counter = 0;
  const Synchronize guard(recordLock());
  const std::int64_t now = std::time(nullptr);
  counter = now == lastTime ? counter + 1 : 0;
  lastTime = now;
  return {now, counter};
}

template <std::size_t Size, class... Values>
std::string formatted(const char* format, Values... values) {
  std::array<char, Size> text{};
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the layouts are given as C formats
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

void appendColumn(std::string& line, const std::string& text, unsigned width) {
  const std::size_t end = line.size() + width;
  line.append(text, 0, width);
  line.resize(end, ' ');
}

void padTo(std::string& line, unsigned column) { line.resize(column, ' '); }

std::string objectText(const void* object) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): an address is shown as a number
  const auto address = static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(object));
  return object ? formatted<32>("@%016llx", address) : "           static";
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

std::string LogRecord::getTimestamp() const {
  static constexpr const char* kDigits = "0123456789ABCDEF";
  const std::tm time = internal::localTime(logTime_);
  const std::uint32_t low = sequence_ % 256;
  const std::array<char, 3> digits{kDigits[low / 16], kDigits[low % 16], '\0'};
  return formatted<64>("%02d:%02d:%02d.%03d.%s", time.tm_hour, time.tm_min, time.tm_sec,
                       static_cast<int>(sequence_ / 256), digits.data());
}

std::string LogRecord::getDateTimestamp() const {
  const std::tm time = internal::localTime(logTime_);
  std::array<char, 64> zone{};
  const bool named = std::strftime(zone.data(), zone.size(), "%Z", &time) != 0;
  return formatted<160>("%02d/%02d/%04d %02d:%02d:%02d.%03d %s", time.tm_mday, time.tm_mon + 1, time.tm_year + 1900,
                        time.tm_hour, time.tm_min, time.tm_sec, static_cast<int>(sequence_ / 256),
                        named ? zone.data() : "???");
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

std::ostream& operator<<(std::ostream& stream, const LogRecord& record) {
  const std::string thread = formatted<32>("%016lx", static_cast<unsigned long>(record.threadId_));
  std::string line;
  if (record.type_ == LogRecordType::EVENT) {
    line = "[" + record.getDateTimestamp() + "]  " + thread + " ";
    appendColumn(line, record.sourceClassName_, kEventClassWidth);
    line += ' ';
    line += record.level_.getIndicator();
  } else {
    line = record.getTimestamp() + "  " + thread + " " + objectText(record.objectReference_) + " ";
    appendColumn(line, record.sourceClassName_, kTraceClassWidth);
  }
  return stream << line + ' ' + record.getMessage();
}

}  // namespace tessel
