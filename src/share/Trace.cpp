#include <tessel/Trace.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <iostream>
#include <sstream>

#include <tessel/FFDC.h>
#include <tessel/Logger.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThread.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>
#include <tessel/TraceDataLogRecord.h>
#include <tessel/TraceEntryLogRecord.h>
#include <tessel/TraceExitLogRecord.h>
#include <tessel/TraceThrowingLogRecord.h>

#include "internal/Bundles.h"
#include "internal/ContainsByte.h"
#include "internal/DiagnosticsLock.h"
#include "internal/StandardStreams.h"
#include "internal/ThreadState.h"
#include "internal/TraceSwitch.h"

namespace tessel {
namespace {

const RasDescriptor rd("Trace", internal::kMessages);

constexpr int kMaxArguments = 5;
constexpr const char* kEmptyArgument = "\"\"";

LogLevel logLevelOf(const TraceLevel& level) {
  switch (level.getValue()) {
    case TraceLevel::MODERATE:
      return LogLevel::FINER;
    case TraceLevel::VERBOSE:
      return LogLevel::FINEST;
    default:
      return LogLevel::FINE;
  }
}

}  // namespace

// Holds the trace lock for one trace point, before which the exits that came to nothing are made up for.
class Trace::Guard {
 public:
  // What fails in here, after the other constructor, gives the lock back.
  explicit Guard(Trace& trace) : Guard(trace, internal::threadState()) {
    if (taken_) trace_.popDeferredExits(thread_);
  }
  ~Guard() {
    if (taken_) trace_.unlockTrace();
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

  bool taken() const { return taken_; }

 private:
  Guard(Trace& trace, internal::ThreadState& thread)
      : trace_(trace), thread_(thread), taken_(trace.lockTrace(thread)) {}

  Trace& trace_;
  internal::ThreadState& thread_;
  const bool taken_;
};

Trace::Trace() : lock_(new NYXThreadSyncImpl), methodStacks_(new MethodStacks), stream_(&std::cout) {}

Trace::~Trace() {
  delete methodStacks_;
  delete lock_;
}

Trace::Trace(const Trace&) : Trace() {
  const NYXException failure("Trace copy constructor should never be called!");
  FFDC::capture(rd, "Trace", FFDC::PROBE_001(), &failure);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): nothing is ever assigned
Trace& Trace::operator=(const Trace&) {
  const NYXException failure("Trace assignment operator should never be called!");
  FFDC::capture(rd, "operator=", FFDC::PROBE_002(), &failure);
  return *this;
}

Trace& Trace::getInstance() {
  static Trace& instance = *new Trace;
  return instance;
}

void Trace::entry(const RasDescriptor& descriptor, const char* methodName) {
  getInstance().traceMethodEntry(descriptor, nullptr, methodName, 0);
}

void Trace::exit(const RasDescriptor& descriptor, const char* methodName) { exit(descriptor, nullptr, methodName); }

void Trace::exit(const RasDescriptor& descriptor, const void* object, const char* methodName) {
  getInstance().traceMethodExit(descriptor, object, methodName, nullptr, std::string());
}

void Trace::exit(const RasDescriptor& descriptor, const void* object, const char* methodName,
                 const std::string& returnValue, const std::string& returnType) {
  getInstance().traceMethodExit(descriptor, object, methodName, &returnValue, returnType);
}

void Trace::data(const RasDescriptor& descriptor, const TraceLevel& level, const char* methodName) {
  getInstance().traceMethodData(descriptor, level, nullptr, methodName, 0);
}

void Trace::throwing(const RasDescriptor& descriptor, const char* methodName, const NYXException* thrown) {
  throwing(descriptor, nullptr, methodName, thrown);
}

void Trace::throwing(const RasDescriptor& descriptor, const void* object, const char* methodName,
                     const NYXException* thrown) {
  getInstance().traceMethodThrowing(descriptor, object, methodName, thrown);
}

// A thread whose wait has run out only tries until it gets the lock again: one stall costs it one wait.
bool Trace::waitForLock(internal::ThreadState& thread) {
  if (!internal::isJavaProcess()) return internal::lockWithinLimit(*lock_);
  const bool taken = thread.waitRanOut ? lock_->tryLock() : internal::lockWithinLimit(*lock_);
  thread.waitRanOut = !taken;
  return taken;
}

bool Trace::lockTrace(internal::ThreadState& thread) {
  if (internal::NoTraceInJava::active(thread)) return false;
  if (!(internal::NoBlockingTrace::active(thread) ? lock_->tryLock() : waitForLock(thread))) return false;
  if (inTrace_) {
    lock_->unlock();
    return false;
  }
  inTrace_ = true;
  return true;
}

void Trace::unlockTrace() {
  inTrace_ = false;
  lock_->unlock();
}

void Trace::setArguments(LogRecord& record, int count, std::va_list list) {
  const auto kept = static_cast<unsigned>(std::clamp(count, 0, kMaxArguments));
  for (unsigned i = 0; i < kept; ++i) {
    const auto* text = va_arg(list, const std::string*);  // NOLINT(cppcoreguidelines-pro-type-vararg)
    record.arguments_.at(i) = text && !text->empty() ? *text : kEmptyArgument;
  }
  record.numArguments_ = kept;
}

void Trace::dropMethodStack() noexcept {
  internal::threadState().deferredExits = 0;
  if (!internal::traceWasEverOn()) return;
  try {
    Trace& trace = getInstance();
    const Guard guard(trace);
    if (guard.taken()) trace.removeMethodStack(NYXThread::getCurrentThreadId());
  } catch (...) {  // NOLINT(bugprone-empty-catch): trace never takes a thread down
  }
}

void Trace::deferExit() { ++internal::threadState().deferredExits; }

void Trace::popDeferredExits(internal::ThreadState& thread) {
  if (thread.deferredExits == 0) return;
  MethodStack* stack = getMethodStack(NYXThread::getCurrentThreadId());
  for (; thread.deferredExits > 0; --thread.deferredExits) {
    if (!stack->empty()) stack->pop();
  }
}

// A thread's stack comes and goes with each outermost method: the one that went last is used again.
Trace::MethodStack* Trace::getMethodStack(unsigned long threadId) {
  if (!methodStacks_) return nullptr;
  const auto known = methodStacks_->find(threadId);
  if (known != methodStacks_->end()) return known->second.get();
  if (!spareStack_) return methodStacks_->emplace(threadId, std::make_unique<MethodStack>()).first->second.get();
  spareStack_.key() = threadId;
  return methodStacks_->insert(std::move(spareStack_)).position->second.get();
}

void Trace::removeMethodStack(unsigned long threadId) {
  if (!methodStacks_) return;
  MethodStacks::node_type removed = methodStacks_->extract(threadId);
  if (removed && removed.mapped()->empty()) spareStack_ = std::move(removed);
}

std::string Trace::generateIndent(unsigned long long depth) {
  constexpr unsigned long long kMark = 5;
  std::string indent;
  for (unsigned long long i = 1; i < depth; ++i) indent += i % kMark == 0 ? '+' : '-';
  return indent + ' ';
}

std::string Trace::generateMethodEntryIndent(unsigned long threadId, const char* methodName) {
  std::string text;
  MethodStack* stack = getMethodStack(threadId);
  if (stack && methodName) {
    stack->push(methodName);
    text = generateIndent(stack->size());
  }
  text += " { ";
  return text;
}

std::string Trace::generateMethodDataIndent(unsigned long threadId) {
  const MethodStack* stack = getMethodStack(threadId);
  return (stack ? generateIndent(stack->size() + 1) : std::string()) + " d ";
}

std::string Trace::generateMethodThrowingIndent(unsigned long threadId) {
  const MethodStack* stack = getMethodStack(threadId);
  return (stack ? generateIndent(stack->size() + 1) : std::string()) + " ! ";
}

std::string Trace::generateMethodExitIndent(unsigned long threadId, const char* methodName) {
  MethodStack* stack = getMethodStack(threadId);
  if (!stack || !methodName) return " } ";
  std::string text;
  if (!stack->empty() && stack->top() == methodName) {
    text = generateIndent(stack->size());
    stack->pop();
  } else {
    text = unbalancedExit(*stack, methodName);
    text += generateIndent(stack->size() + 1);
  }
  if (stack->empty()) removeMethodStack(threadId);
  text += " } ";
  return text;
}

std::string Trace::unbalancedExit(MethodStack& stack, const std::string& methodName) {
  const MethodStack copy = stack;
  bool found = false;
  while (!found && !stack.empty()) {
    found = stack.top() == methodName;
    stack.pop();
  }
  if (found) return "*** Missing Trace::Exit " + copy.top() + " *** ";
  stack = copy;
  return "*** Missing Trace::Entry " + methodName + " *** ";
}

std::string Trace::getPrefixedClassName(const std::string& className) {
  if (internal::containsByte(className, '.')) return className;
  const std::string& prefix = internal::traceSpecNamePrefix();
  std::string name;
  name.reserve(prefix.size() + 1 + className.size());
  name += prefix;
  name += '.';
  name += className;
  return name;
}

// NOLINTNEXTLINE(cert-dcl50-cpp): the worker's signature
bool Trace::traceMethodEntry(const RasDescriptor& descriptor, const void* object, const char* methodName, int count,
                             ...) {
  const Guard guard(*this);
  if (!guard.taken()) return false;
  const unsigned long threadId = NYXThread::getCurrentThreadId();
  TraceEntryLogRecord record(LogLevel::FINE, generateMethodEntryIndent(threadId, methodName));
  std::va_list list;
  va_start(list, count);
  setArguments(record, count, list);
  va_end(list);
  publish(descriptor, object, methodName, record);
  return true;
}

bool Trace::traceMethodExit(const RasDescriptor& descriptor, const void* object, const char* methodName,
                            const std::string* returnValue, const std::string& returnType) {
  const Guard guard(*this);
  if (!guard.taken()) return false;
  const unsigned long threadId = NYXThread::getCurrentThreadId();
  TraceExitLogRecord record(LogLevel::FINE, generateMethodExitIndent(threadId, methodName));
  if (returnValue) {
    record.arguments_.front() = *returnValue;
    record.numArguments_ = 1;
  }
  record.setMethodReturnType(returnType);
  publish(descriptor, object, methodName, record);
  return true;
}

// NOLINTNEXTLINE(cert-dcl50-cpp): the worker's signature
bool Trace::traceMethodData(const RasDescriptor& descriptor, const TraceLevel& level, const void* object,
                            const char* methodName, int count, ...) {
  const Guard guard(*this);
  if (!guard.taken()) return false;
  const unsigned long threadId = NYXThread::getCurrentThreadId();
  TraceDataLogRecord record(logLevelOf(level), generateMethodDataIndent(threadId));
  std::va_list list;
  va_start(list, count);
  setArguments(record, count, list);
  va_end(list);
  publish(descriptor, object, methodName, record);
  return true;
}

bool Trace::traceMethodThrowing(const RasDescriptor& descriptor, const void* object, const char* methodName,
                                const NYXException* thrown) {
  const Guard guard(*this);
  if (!guard.taken()) return false;
  const unsigned long threadId = NYXThread::getCurrentThreadId();
  TraceThrowingLogRecord record(LogLevel::FINE, generateMethodThrowingIndent(threadId));
  record.setThrown(thrown);
  publish(descriptor, object, methodName, record);
  return true;
}

void Trace::publish(const RasDescriptor& descriptor, const void* object, const char* methodName, LogRecord& record) {
  record.sourceMethodName_ = methodName ? methodName : "null";
  record.sourceClassName_ = getPrefixedClassName(descriptor.className_);
  record.setObjectReference(object);
  record.setThreadId(NYXThread::getCurrentThreadId());
  if (Logger* logger = descriptor.logger_) {
    logger->log(record);
    return;
  }
  std::ostringstream line;
  line << "DEBUG: " << record << '\n';
  internal::print(*stream_, line.str());
}

}  // namespace tessel
