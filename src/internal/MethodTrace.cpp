#include "internal/MethodTrace.h"

namespace tessel::internal {

void MethodTrace::sendThrowing(const RasDescriptor& rd, const void* object, const char* method,
                               const NYXException& exception) noexcept {
  try {
    if (rd.isFlowOn()) Trace::throwing(rd, object, method, &exception);
  } catch (...) {  // NOLINT(bugprone-empty-catch): trace never takes the traced code down
  }
}

void MethodTrace::leave(Call* call) noexcept {
  const std::unique_ptr<Call> ended(call);
  try {
    const std::string* result = call->result ? &*call->result : nullptr;
    if (!Trace::getInstance().traceMethodExit(call->rd, call->object, call->method, result, call->resultType)) {
      Trace::deferExit();
    }
  } catch (...) {
    Trace::deferExit();
  }
}

}  // namespace tessel::internal
