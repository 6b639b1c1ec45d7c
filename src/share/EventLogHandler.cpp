#include <tessel/EventLogHandler.h>

#include <iostream>
#include <sstream>

#include <tessel/LogRecord.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>
#include <tessel/SecureFileHandler.h>

#include "internal/BuildLevel.h"
#include "internal/Bundles.h"
#include "internal/DiagnosticsLock.h"
#include "internal/LogBanner.h"
#include "internal/MethodTrace.h"
#include "internal/StandardStreams.h"

namespace tessel {
namespace {

void printError(const std::string& line) { internal::print(std::cerr, line + '\n'); }

void printEvent(const LogRecord& record) {
  std::ostringstream line;
  line << NLS::format(internal::elements(), "KTBNV_EVENT_LOG_PREFIX") << ' ' << record;
  printError(line.str());
}

}  // namespace

const RasDescriptor EventLogHandler::rd("EventLogHandler", internal::kMessages);

EventLogHandler::EventLogHandler(const LogFileProperties& properties)
    : LogHandler(LogLevel::CONFIG), properties_(properties) {
  const internal::MethodTrace trace(rd, this, "EventLogHandler", properties.getPattern());
  try {
    auto file =
        std::make_unique<SecureFileHandler>(properties.getPattern(), properties.getLimit(), properties.getCount(),
                                            properties.isAppend(), properties.isCanRead(), 0);
    file->publish(generateLogStartBanner());
    file_ = std::move(file);
  } catch (const NYXException& exception) {
    printError(NLS::format(rd, "KTBNV0126_UNABLE_TO_CREATE_EVENT_LOG", NYXUtils::getParent(properties.getPattern()),
                           exception.getMessage()));
  }
}

EventLogHandler::~EventLogHandler() = default;

// The last line end makes an empty line, since the file ends what it is given with one of its own.
std::string EventLogHandler::generateLogStartBanner() const {
  const RasDescriptor& elements = internal::elements();
  return NLS::format(elements, "KTBNV_START_LOG_BANNER1") + "\n" +
         NLS::format(elements, "KTBNV_BUILD_LEVEL", internal::buildLevel()) + "\n" +
         NLS::format(elements, "KTBNV_PROPERTIES") + "\n" + internal::propertyLines(properties_) +
         NLS::format(elements, "KTBNV_START_LOG_BANNER2") + "\n";
}

void EventLogHandler::publish(LogRecord& record) {
  const internal::MethodTrace trace(rd, this, "publish");
  if (!(record.getLogLevel() >= getLogLevel())) return;
  if (!file_ || internal::InsideLogFile::active()) {
    printEvent(record);
    return;
  }
  try {
    const internal::InsideLogFile mark;
    file_->publish(record);
  } catch (const NYXException& exception) {
    handlePublishError(record, NYXUtils::getParent(properties_.getPattern()), exception);
  }
}

void EventLogHandler::handlePublishError(const LogRecord& record, const std::string& directory,
                                         const NYXException& exception) {
  if (!publishErrorReported_.exchange(true)) {
    printError(NLS::format(rd, "KTBNV0052_UNABLE_TO_WRITE_TO_EVENT_LOG", directory, exception.getMessage()));
  }
  printEvent(record);
}

}  // namespace tessel
