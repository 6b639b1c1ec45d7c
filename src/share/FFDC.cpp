#include <tessel/FFDC.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

#include <tessel/EventLog.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXThread.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/NYXUtils.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>

#include "internal/BuildLevel.h"
#include "internal/Bundles.h"
#include "internal/DiagnosticsLock.h"
#include "internal/LastError.h"
#include "internal/PlatformServices.h"
#include "internal/ScopedFlag.h"
#include "internal/StandardStreams.h"

namespace tessel {
namespace {

template <class... Values>
std::string formatted(const char* format, Values... values) {
  std::array<char, 128> text{};
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the layouts are given as C formats
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

std::string utcText(std::int64_t now) {
  const std::tm time = internal::utcTime(now);
  return formatted("%02d/%02d/%04d %02d:%02d:%02d GMT", time.tm_mday, time.tm_mon + 1, time.tm_year + 1900,
                   time.tm_hour, time.tm_min, time.tm_sec);
}

std::string objectText(const void* object) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): an address is shown as a number
  return formatted("0x%016llx", static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(object)));
}

struct Failure {
  const std::string& className;
  const void* object;
  const std::string& methodName;
  const std::string& probeId;
  const NYXException* exception;
  std::vector<const std::string*> values;
};

std::string recordOf(const Failure& failure, std::int64_t now) {
  std::ostringstream text;
  text << "Level:      " << internal::buildLevel() << '\n'
       << "Time:       " << utcText(now) << '\n'
       << "Process ID: " << internal::currentProcessId() << '\n'
       << "Thread ID:  " << formatted("0x%016lx", NYXThread::getCurrentThreadId()) << '\n'
       << "Class:      " << failure.className << '\n';
  if (failure.object) text << "Instance:   " << objectText(failure.object) << '\n';
  text << "Method:     " << failure.methodName << '\n' << "Probe:      " << failure.probeId << '\n' << "Cause:      ";
  if (failure.exception) {
    text << *failure.exception << '\n';
  } else {
    text << "null\n";
  }
  for (std::size_t i = 0; i < failure.values.size(); ++i) {
    text << "Arg[" << i << "]:     " << (failure.values[i] ? *failure.values[i] : "null") << '\n';
  }
  text << "[EOF]\n";
  return text.str();
}

// Unique: the number counts the captures of the process.
std::string fileName(std::int64_t now, int number) {
  const std::tm time = internal::localTime(now);
  return "FFDC." +
         formatted("%04d%02d%02d%02d%02d%02d.%d.%lu", time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour,
                   time.tm_min, time.tm_sec, number, internal::currentProcessId()) +
         ".log";
}

}  // namespace

const RasDescriptor FFDC::rd("FFDC", internal::kMessages);

FFDC::FFDC() : lock_(new NYXThreadSyncImpl) {}
FFDC::FFDC(const FFDC&) : FFDC() {}
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): there is nothing to copy
FFDC& FFDC::operator=(const FFDC&) { return *this; }
FFDC::~FFDC() { delete lock_; }

FFDC& FFDC::getInstance() {
  static FFDC& instance = *new FFDC;
  return instance;
}

void FFDC::capture(const std::string& className, const std::string& methodName, const std::string& probeId,
                   const NYXException* exception) {
  internalCapture(className, nullptr, methodName, probeId, exception, 0);
}

void FFDC::capture(const RasDescriptor& descriptor, const std::string& methodName, const std::string& probeId,
                   const NYXException* exception) {
  internalCapture(descriptor.getClassName(), nullptr, methodName, probeId, exception, 0);
}

// NOLINTNEXTLINE(cert-dcl50-cpp): the worker's signature
void FFDC::internalCapture(const std::string& className, const void* object, const std::string& methodName,
                           const std::string& probeId, const NYXException* exception, int count, ...) {
  std::va_list list;
  va_start(list, count);
  try {
    Failure failure{className, object, methodName, probeId, exception, {}};
    for (int i = 0; i < count; ++i) failure.values.push_back(va_arg(list, const std::string*));
    FFDC& instance = getInstance();
    const std::int64_t now = internal::currentTime();
    const std::string name = fileName(now, instance.captures_++);
    instance.take(name, recordOf(failure, now));
  } catch (...) {  // NOLINT(bugprone-empty-catch): a capture never adds to the failure that it records
  }
  va_end(list);
}

// Inside a log file not even the lock is asked for: its holder may be waiting for that file.
void FFDC::take(const std::string& name, const std::string& record) {
  if (internal::InsideLogFile::active()) {
    internal::print(std::cerr, record);
    return;
  }
  const internal::DiagnosticsLock guard(*lock_, internal::DiagnosticsLock::WithinLimit());
  if (!guard.taken() || inProgress_) {
    internal::print(std::cerr, record);
    return;
  }
  const internal::ScopedFlag flag(inProgress_);
  const std::string& directory = RAS::getLogPath();
  if (!directory.empty()) {
    const std::string path = directory + "/ffdc/" + name;
    if (writeFile(path, record)) {
      EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0084_FFDC_TAKEN", path));
      return;
    }
  }
  EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0150_FFDC_TAKEN", record));
}

// Returns whether all of the record is in the file; what prevented it has been reported.
bool FFDC::writeFile(const std::string& path, const std::string& record) {
  std::unique_ptr<std::ofstream> file;
  try {
    file = openFFDCFile(path);
  } catch (const NYXException& exception) {
    EventLog::errorNoFormat(rd, exception.getMessage());
    return false;
  }
  const std::string shown = internal::withoutEscapes(record);
  *file << "Filename:   " << path << '\n' << shown << std::flush;
  const internal::LastError error;
  if (*file) return true;
  EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0083_UNABLE_TO_WRITE_TO_FFDC_FILE", path, error.text()));
  return false;
}

std::unique_ptr<std::ofstream> FFDC::openFFDCFile(const std::string& path) {
  const std::string parent = NYXUtils::getParent(path);
  if (NYXUtils::mkdirs(parent, false) != 0) {
    // Always 0, not the reason: readers of the message know it so.
    throw NYXIOException(NLS::format(rd, "KTBNV0051_MKDIR_FAILED", parent, "0"));
  }
  auto file = std::make_unique<std::ofstream>(path);
  const internal::LastError error;
  if (!*file) throw NYXIOException(NLS::format(rd, "KTBNV0054_UNABLE_TO_OPEN_FILE", path, error.text()));
  try {
    NYXUtils::mkpriv(path, false, false);
  } catch (const NYXException& exception) {
    const std::string reason = exception.getMessage();
    EventLog::warningNoFormat(rd, NLS::format(rd, "KTBNV0148_UNABLE_TO_MKPRIV_FFDC_FILE", path, reason));
  }
  return file;
}

}  // namespace tessel
