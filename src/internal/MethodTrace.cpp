#include "internal/MethodTrace.h"

#include <memory>

namespace tessel::internal {

void MethodTrace::sendThrowing(const NYXException& exception) const noexcept {
  if (rd_.isFlowOn()) Trace::throwing(rd_, object_, method_, &exception);
}

void MethodTrace::leave() noexcept {
  const std::unique_ptr<std::string> result(result_);
  try {
    if (!Trace::getInstance().traceMethodExit(rd_, object_, method_, result_, resultType_ ? resultType_ : "")) {
      Trace::deferExit();
    }
  } catch (...) {
    Trace::deferExit();
  }
}

}  // namespace tessel::internal
