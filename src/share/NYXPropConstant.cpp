#include <tessel/NYXPropConstant.h>

#include <limits>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/RasDescriptor.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace tessel {
namespace {

const RasDescriptor rd("NYXPropConstant", internal::kMessages);

constexpr int kMax = std::numeric_limits<int>::max();

}  // namespace

std::atomic<const NYXPropConstant*> NYXPropConstant::impl{nullptr};

NYXPropConstant::NYXPropConstant()
    : agentQMgr("agentQMgr"),
      agentQMgrHost("agentQMgrHost"),
      agentQMgrRetryInterval("agentQMgrRetryInterval", 30, 0, kMax),
      tesselQueueManager("tessel.queue.manager"),
      loggerQMgrRetryInterval("loggerQMgrRetryInterval", 30, 0, kMax),
      tesselQueueManagerHost("tessel.queue.manager.host"),
      outputLogFiles("outputLogFiles", 5, 1, kMax),
      outputLogSize("outputLogSize", 1, 1, kMax),
      trace("trace"),
      traceFiles("traceFiles", 5, 1, kMax),
      traceSize("traceSize", 20, 1, kMax),
      adminGroup("adminGroup"),
      maxRestartCount("maxRestartCount", 4, 0, kMax),
      maxRestartInterval("maxRestartInterval", 120, 0, kMax),
      maxRestartDelay("maxRestartDelay", -1),
      processControllerStatus("processControllerStatus", true),
      lastApplicationExitCode("lastApplicationExitCode", 0),
      queueManagerStatus("queueManagerStatus", true),
      queueManagerLastError("queueManagerLastError", 0),
      currentApplicationRestartCount("currentApplicationRestartCount", 0),
      totalApplicationRestartCount("totalApplicationRestartCount", 0) {}

NYXPropConstant::NYXPropConstant(const NYXPropConstant& other) = default;
NYXPropConstant::~NYXPropConstant() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): nothing is ever assigned
NYXPropConstant& NYXPropConstant::operator=(const NYXPropConstant&) {
  const internal::MethodTrace method(rd, this, "operator=");
  const NYXException failure("NYXPropConstant assignment operator should never be called!");
  FFDC::capture(rd, "operator=", FFDC::PROBE_001(), &failure);
  throw method.thrown(failure);
}

std::vector<const NativePropertyItem*> NYXPropConstant::getItems() const {
  return {&agentQMgr,
          &agentQMgrHost,
          &agentQMgrRetryInterval,
          &tesselQueueManager,
          &loggerQMgrRetryInterval,
          &tesselQueueManagerHost,
          &outputLogFiles,
          &outputLogSize,
          &trace,
          &traceFiles,
          &traceSize,
          &adminGroup,
          &maxRestartCount,
          &maxRestartInterval,
          &maxRestartDelay,
          &processControllerStatus,
          &lastApplicationExitCode,
          &queueManagerStatus,
          &queueManagerLastError,
          &currentApplicationRestartCount,
          &totalApplicationRestartCount};
}

// Threads that come first at the same moment agree on one instance.
const NYXPropConstant& NYXPropConstant::getInstance() {
  const NYXPropConstant* instance = impl.load();
  if (instance) return *instance;
  const auto* made = new NYXPropConstant;
  if (impl.compare_exchange_strong(instance, made)) return *made;
  delete made;
  return *instance;
}

void NYXPropConstant::deleteInstance() { delete impl.exchange(nullptr); }

}  // namespace tessel
