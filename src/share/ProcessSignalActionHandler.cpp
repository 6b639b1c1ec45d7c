#include <tessel/ProcessSignalActionHandler.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace tessel {

const RasDescriptor ProcessSignalActionHandler::rd("ProcessSignalActionHandler", internal::kMessages);

ProcessSignalActionHandler::ProcessSignalActionHandler() = default;
ProcessSignalActionHandler::ProcessSignalActionHandler(const ProcessSignalActionHandler&) = default;
ProcessSignalActionHandler& ProcessSignalActionHandler::operator=(const ProcessSignalActionHandler&) = default;
ProcessSignalActionHandler::~ProcessSignalActionHandler() = default;

void ProcessSignalActionHandler::action(int signal) { defaultAction(signal); }

void ProcessSignalActionHandler::defaultAction(int signal) {
  const internal::MethodTrace trace(rd, this, "defaultAction", signal);
  trace.data(TraceLevel::MODERATE, "Received signal: " + std::to_string(signal));
}

}  // namespace tessel
