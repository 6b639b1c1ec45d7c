#include <tessel/FFDC.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <sstream>
#include <vector>

#include <tessel/EventLog.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThread.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/RasDescriptor.h>

#include "internal/BuildLevel.h"
#include "internal/Bundles.h"
#include "internal/DiagnosticsLock.h"
#include "internal/PlatformServices.h"

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

std::string recordOf(const Failure& failure) {
  std::ostringstream text;
  text << "Level:      " << internal::buildLevel() << '\n'
       << "Time:       " << utcText(std::time(nullptr)) << '\n'
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
    getInstance().take(recordOf(failure));
  } catch (...) {  // NOLINT(bugprone-empty-catch): a capture never adds to the failure that it records
  }
  va_end(list);
}

// There is no log directory yet: the whole record goes into the event log.
void FFDC::take(const std::string& record) {
  const internal::DiagnosticsLock guard(*lock_);
  if (inProgress_) {
    std::cerr << record << std::flush;
    return;
  }
  struct Flag {
    bool& flag;
    explicit Flag(bool& f) : flag(f) { flag = true; }
    ~Flag() { flag = false; }
    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;
  };
  const Flag flag(inProgress_);
  EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0150_FFDC_TAKEN", record));
}

}  // namespace tessel
