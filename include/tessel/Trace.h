/// @file
#pragma once

#include <cstdarg>
#include <deque>
#include <iosfwd>
#include <map>
#include <memory>
#include <stack>
#include <string>
#include <type_traits>

#include <tessel/Export.h>
#include <tessel/TraceLevel.h>

namespace tessel {

class LogRecord;
class NYXException;
class NYXThreadSyncImpl;
class RasDescriptor;

namespace internal {
class MethodTrace;
struct ThreadState;
}  // namespace internal

/// Method trace: entries, exits, data points and thrown exceptions of all threads, indented by call depth.
///
/// The trace points do not test the level: ask RasDescriptor::isFlowOn() before entry, exit and throwing, isOn(level)
/// before data. Each may be called from any thread; all threads' points are written one after the other. A point
/// raised while the same thread publishes another one is dropped, and so is a point of a thread that is inside a
/// log handler or holds another lock of the diagnostics while some other thread is tracing. In a process whose records
/// go to Java a point is also dropped when the others do not let it in for a quarter of a second. Nothing is thrown.
class TESSEL_API Trace {
 public:
  /// An entry without object and arguments. @param methodName shown as "null" when null, here and below.
  static void entry(const RasDescriptor& descriptor, const char* methodName);
  /// An exit without object and return value.
  static void exit(const RasDescriptor& descriptor, const char* methodName);
  /// A data point without object and arguments. @param level the detail, as the caller has asked for it.
  static void data(const RasDescriptor& descriptor, const TraceLevel& level, const char* methodName);
  /// An exception on its way out. @param thrown not owned; shown with its causes and its class; may be null.
  static void throwing(const RasDescriptor& descriptor, const char* methodName, const NYXException* thrown);

  /// An entry on behalf of an object. @param arguments std::string each; the first five are shown, an empty one as
  /// two double-quote characters.
  template <class... Texts>
  static void entry(const RasDescriptor& descriptor, const void* object, const char* methodName,
                    const Texts&... arguments) {
    static_assert((std::is_same_v<Texts, std::string> && ...), "an argument of trace is a std::string");
    getInstance().traceMethodEntry(descriptor, object, methodName, static_cast<int>(sizeof...(arguments)),
                                   &arguments...);
  }

  /// An exit on behalf of an object, without a return value.
  static void exit(const RasDescriptor& descriptor, const void* object, const char* methodName);

  /// An exit with a return value. @param returnType shown behind the value.
  static void exit(const RasDescriptor& descriptor, const void* object, const char* methodName,
                   const std::string& returnValue, const std::string& returnType);

  /// A data point on behalf of an object. @param arguments as for entry.
  template <class... Texts>
  static void data(const RasDescriptor& descriptor, const TraceLevel& level, const void* object, const char* methodName,
                   const Texts&... arguments) {
    static_assert((std::is_same_v<Texts, std::string> && ...), "an argument of trace is a std::string");
    getInstance().traceMethodData(descriptor, level, object, methodName, static_cast<int>(sizeof...(arguments)),
                                  &arguments...);
  }

  /// An exception on its way out of an object's method. @param thrown as above.
  static void throwing(const RasDescriptor& descriptor, const void* object, const char* methodName,
                       const NYXException* thrown);

  virtual ~Trace();

 private:
  friend class internal::MethodTrace;
  friend class NYXThreadImpl;
  friend struct TraceTest;

  using MethodStack = std::stack<std::string, std::deque<std::string>>;
  using MethodStacks = std::map<unsigned long, std::unique_ptr<MethodStack>>;
  class Guard;

  Trace();
  Trace(const Trace& other);
  Trace& operator=(const Trace& other);

  static Trace& getInstance();

  // The workers return whether the point was taken.
  bool traceMethodEntry(const RasDescriptor& descriptor, const void* object, const char* methodName, int count, ...);
  bool traceMethodExit(const RasDescriptor& descriptor, const void* object, const char* methodName,
                       const std::string* returnValue, const std::string& returnType);
  bool traceMethodData(const RasDescriptor& descriptor, const TraceLevel& level, const void* object,
                       const char* methodName, int count, ...);
  bool traceMethodThrowing(const RasDescriptor& descriptor, const void* object, const char* methodName,
                           const NYXException* thrown);

  // Forgets the calling thread's stack, if there was ever any trace; ids of ended threads are used again.
  static void dropMethodStack() noexcept;

  // An exit that could not be taken: its name is popped at the thread's next point.
  static void deferExit();
  void popDeferredExits(internal::ThreadState& thread);

  // The first five of `count` pointers to std::string.
  static void setArguments(LogRecord& record, int count, std::va_list list);

  MethodStack* getMethodStack(unsigned long threadId);
  void removeMethodStack(unsigned long threadId);
  static std::string generateIndent(unsigned long long depth);
  std::string generateMethodEntryIndent(unsigned long threadId, const char* methodName);
  std::string generateMethodExitIndent(unsigned long threadId, const char* methodName);
  std::string generateMethodDataIndent(unsigned long threadId);
  std::string generateMethodThrowingIndent(unsigned long threadId);
  static std::string unbalancedExit(MethodStack& stack, const std::string& methodName);
  static std::string getPrefixedClassName(const std::string& className);
  bool waitForLock(internal::ThreadState& thread);
  bool lockTrace(internal::ThreadState& thread);
  void unlockTrace();
  void publish(const RasDescriptor& descriptor, const void* object, const char* methodName, LogRecord& record);

  NYXThreadSyncImpl* lock_;
  bool inTrace_ = false;                // guarded by lock_
  MethodStacks* methodStacks_;          // guarded by lock_
  MethodStacks::node_type spareStack_;  // guarded by lock_; empty, or null
  std::ostream* stream_;
};

}  // namespace tessel
