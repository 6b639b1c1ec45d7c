#include <tessel/ConsoleLogHandler.h>

#include <iostream>

#include <tessel/LogRecord.h>
#include <tessel/NYXThreadSyncImpl.h>

#include "internal/Bundles.h"
#include "internal/DiagnosticsLock.h"
#include "internal/MethodTrace.h"
#include "internal/StandardStreams.h"

namespace tessel {

const RasDescriptor ConsoleLogHandler::rd("ConsoleLogHandler", internal::kMessages);

ConsoleLogHandler::ConsoleLogHandler() : LogHandler(LogLevel::CONFIG), sync_(new NYXThreadSyncImpl) {}

ConsoleLogHandler::~ConsoleLogHandler() { delete sync_; }

void ConsoleLogHandler::publish(LogRecord& record) {
  const internal::MethodTrace trace(rd, this, "publish", record);
  if (!(record.getLogLevel() >= getLogLevel())) return;
  const std::string text = record.getMessage();
  std::ostream& stream = record.getLogLevel() >= LogLevel::WARNING ? std::cerr : std::cout;
  const internal::DiagnosticsLock guard(*sync_);
  internal::print(stream, text + '\n');
}

}  // namespace tessel
