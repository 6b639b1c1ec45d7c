#include "TraceSamples.h"

#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace bench {
namespace {

const tessel::RasDescriptor rd("TraceSamples", tessel::internal::kMessages);
spdlog::logger* logger = nullptr;

}  // namespace

int plain(int value) { return value * 3 + 1; }

int traced(int value) {
  tessel::internal::MethodTrace trace(rd, nullptr, "traced", value);
  return trace.result(value * 3 + 1);
}

int logged(int value) {
  logger->debug("logged {}", value);
  return value * 3 + 1;
}

std::shared_ptr<spdlog::logger> disabledLogger() {
  auto made = std::make_shared<spdlog::logger>("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
  made->set_level(spdlog::level::off);
  logger = made.get();
  return made;
}

}  // namespace bench
