// The inside of the trace facility.
#pragma once

#include <cstddef>
#include <string>

#include <tessel/NYXThread.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Trace.h>

namespace tessel {

// The method stacks may only be asked about a thread that does not trace meanwhile.
struct TraceTest {
  static bool hasStack(unsigned long threadId = NYXThread::getCurrentThreadId()) {
    return Trace::getInstance().methodStacks_->count(threadId) > 0;
  }
  static std::size_t openMethods() {
    return Trace::getInstance().getMethodStack(NYXThread::getCurrentThreadId())->size();
  }
  static void openMethod(unsigned long threadId, const std::string& method) {
    Trace::getInstance().getMethodStack(threadId)->push(method);
  }
  static void entryWithNullArgument(const RasDescriptor& rd, const char* method, const std::string& second) {
    const std::string* null = nullptr;
    Trace::getInstance().traceMethodEntry(rd, nullptr, method, 2, null, &second);
  }
  static void copyTrace() { const Trace copy(Trace::getInstance()); }
  static void assignTrace() { Trace::getInstance() = Trace::getInstance(); }
};

}  // namespace tessel
