#include "internal/MethodTrace.h"

#include <memory>

namespace tessel::internal {

void MethodTrace::sendThrowing(const NYXException& exception) const noexcept {
  try {
    if (rd_.isFlowOn()) Trace::throwing(rd_, object_, method_, &exception);
  } catch (...) {  // NOLINT(bugprone-empty-catch): trace never takes the traced code down
  }
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
