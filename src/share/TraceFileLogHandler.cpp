#include <tessel/TraceFileLogHandler.h>

#include <tessel/EventLog.h>
#include <tessel/LogRecord.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/NYXUtils.h>
#include <tessel/SecureFileHandler.h>
#include <tessel/Synchronize.h>

#include "internal/BuildLevel.h"
#include "internal/Bundles.h"
#include "internal/DiagnosticsLock.h"
#include "internal/LogBanner.h"
#include "internal/MethodTrace.h"
#include "internal/PlatformServices.h"
#include "internal/ScopedFlag.h"

namespace tessel {

const RasDescriptor TraceFileLogHandler::rd("TraceFileLogHandler", internal::kMessages);

TraceFileLogHandler::TraceFileLogHandler(const LogFileProperties& properties)
    : LogHandler(LogLevel::FINEST),
      properties_(properties),
      banner_(generateLogStartBanner()),
      sync_(new NYXThreadSyncImpl) {}

TraceFileLogHandler::~TraceFileLogHandler() = default;

// BUILD_LEVEL and PROPERTIES are in no catalogue and show as themselves. The file ends the last line.
std::string TraceFileLogHandler::generateLogStartBanner() const {
  const RasDescriptor& elements = internal::elements();
  return NLS::format(elements, "KTBNV_DATE", internal::calendarTime(internal::currentTime())) + "\n" +
         NLS::format(elements, "KTBNV_PROCESS_ID", std::to_string(internal::currentProcessId())) + "\n\n" +
         NLS::format(elements, "BUILD_LEVEL", internal::buildLevel()) + "\n" + NLS::format(elements, "PROPERTIES") +
         "\n" + internal::propertyLines(properties_) + "\n" + LogRecord::getLogRecordOutputHeader();
}

void TraceFileLogHandler::publish(LogRecord& record) {
  const internal::MethodTrace trace(rd, this, "publish");
  if (!(record.getLogLevel() >= getLogLevel())) return;
  std::string reason;
  switch (write(record, reason)) {
    case Outcome::notCreated:
      report("KTBNV0127_UNABLE_TO_CREATE_TRACE", reason);
      break;
    case Outcome::notWritten:
      report("KTBNV0053_UNABLE_TO_WRITE_TO_TRACE", reason);
      break;
    case Outcome::nothingToReport:
      break;
  }
}

// A record that the file's own trace points bring back to the holder of the lock is dropped.
TraceFileLogHandler::Outcome TraceFileLogHandler::write(const LogRecord& record, std::string& reason) {
  const internal::InsideLogFile mark;
  const Synchronize guard(sync_.get());
  if (busy_) return Outcome::nothingToReport;
  const internal::ScopedFlag busy(busy_);
  try {
    if (!file_ && !errorReported_) open();
  } catch (const NYXException& exception) {
    return firstFailure(Outcome::notCreated, exception, reason);
  }
  if (!file_ || !record.getType().isTraceable()) return Outcome::nothingToReport;
  try {
    line_.clear();
    record.appendTo(line_);
    file_->publish(line_);
  } catch (const NYXException& exception) {
    return firstFailure(Outcome::notWritten, exception, reason);
  }
  return Outcome::nothingToReport;
}

void TraceFileLogHandler::open() {
  auto file =
      std::make_unique<SecureFileHandler>(properties_.getPattern(), properties_.getLimit(), properties_.getCount(),
                                          properties_.isAppend(), properties_.isCanRead(), 0);
  file->publish(banner_);
  file_ = std::move(file);
}

// Noted before it is reported: the report comes back to this handler through the root logger.
TraceFileLogHandler::Outcome TraceFileLogHandler::firstFailure(Outcome outcome, const NYXException& exception,
                                                               std::string& reason) {
  if (errorReported_) return Outcome::nothingToReport;
  errorReported_ = true;
  reason = exception.getMessage();
  return outcome;
}

void TraceFileLogHandler::report(const char* key, const std::string& reason) const {
  const std::string directory = NYXUtils::getParent(properties_.getPattern());
  EventLog::errorNoFormat(rd, NLS::format(rd, key, directory, reason));
}

}  // namespace tessel
