// The one line by which a method reports itself.
#pragma once

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>

#include <tessel/NLS.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Trace.h>

#include "internal/TraceSwitch.h"

namespace tessel::internal {

template <class T>
std::string traceText(const T& value) {
  if constexpr (std::is_convertible_v<T, std::string>) {
    return value;
  } else if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else {
    std::ostringstream text;
    text << value;
    return text.str();
  }
}

// The type as an exit record shows it.
template <class T>
const char* traceType() {
  if constexpr (std::is_same_v<T, bool>) return "bool";
  if constexpr (std::is_integral_v<T>) return sizeof(T) > sizeof(int) ? "long long" : "int";
  if constexpr (std::is_pointer_v<T>) return "pointer";
  if constexpr (std::is_convertible_v<T, std::string>) return "string";
  return "object";
}

// How the paths that are taken only while trace is on receive a value: an address of it would keep it, or the object
// that holds it, in memory also while trace is off.
template <class T>
using Passed = std::conditional_t<std::is_scalar_v<T>, T, const T&>;

// Traces the entry now and the exit when the scope ends, also by an exception. With trace off it costs one relaxed
// load and one test of a register. The exit is sent only if the entry was taken.
class MethodTrace {
 public:
  template <class... Arguments>
  MethodTrace(const RasDescriptor& descriptor, const void* object, const char* method,
              const Arguments&... arguments) noexcept
      : rd_(descriptor), object_(object), method_(method) {
    if (traceMayBeOn()) [[unlikely]]
      call_ = enter<Passed<Arguments>...>(rd_, object_, method_, arguments...);
  }
  ~MethodTrace() {
    if (call_) [[unlikely]]
      leave(call_);
  }
  MethodTrace(const MethodTrace&) = delete;
  MethodTrace& operator=(const MethodTrace&) = delete;

  // The value to return, shown by the exit record: `return trace.result(value);`
  template <class T>
  const T& result(const T& value) noexcept {
    if (call_) [[unlikely]]
      remember<Passed<T>>(call_, value);
    return value;
  }

  template <class... Arguments>
  void data(const TraceLevel::TraceLevelValue level, const Arguments&... arguments) const noexcept {
    if (traceMayBeOn()) [[unlikely]]
      sendData<Passed<Arguments>...>(rd_, object_, method_, level, arguments...);
  }

  // The failure to throw: its message formatted from the catalogue, the throw traced.
  template <class Exception, class... Inserts>
  [[nodiscard]] Exception failure(const char* key, const Inserts&... inserts) const {
    return thrown(Exception(NLS::format(rd_, key, inserts...)));
  }

  // The same for an exception that exists already.
  template <class Exception>
  [[nodiscard]] const Exception& thrown(const Exception& exception) const noexcept {
    if (traceMayBeOn()) [[unlikely]]
      sendThrowing(rd_, object_, method_, exception);
    return exception;
  }

 private:
  // A method whose entry was taken; on the heap until it leaves.
  struct Call {
    const RasDescriptor& rd;
    const void* object = nullptr;
    const char* method = nullptr;
    std::optional<std::string> result;
    const char* resultType = "";
  };

  // Null when the entry was not taken.
  template <class... Arguments>
  [[gnu::noinline, gnu::cold]] static Call* enter(const RasDescriptor& rd, const void* object, const char* method,
                                                  Arguments... arguments) noexcept {
    try {
      if (!rd.isFlowOn()) return nullptr;
      std::unique_ptr<Call> call(new Call{rd, object, method, std::nullopt});
      return sendEntry(*call, traceText(arguments)...) ? call.release() : nullptr;
    } catch (...) {  // trace never takes the traced code down
      return nullptr;
    }
  }

  template <class... Texts>
  static bool sendEntry(const Call& call, const Texts&... texts) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg)
    return Trace::getInstance().traceMethodEntry(call.rd, call.object, call.method, static_cast<int>(sizeof...(texts)),
                                                 &texts...);
  }

  template <class T>
  [[gnu::noinline, gnu::cold]] static void remember(Call* call, T value) noexcept {
    try {
      call->result = traceText(value);
      call->resultType = traceType<std::remove_cvref_t<T>>();
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }
  }

  template <class... Arguments>
  [[gnu::noinline, gnu::cold]] static void sendData(const RasDescriptor& rd, const void* object, const char* method,
                                                    const TraceLevel::TraceLevelValue level,
                                                    Arguments... arguments) noexcept {
    try {
      if (rd.isOn(level)) Trace::data(rd, level, object, method, traceText(arguments)...);
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }
  }

  static void sendThrowing(const RasDescriptor& rd, const void* object, const char* method,
                           const NYXException& exception) noexcept;
  static void leave(Call* call) noexcept;

  const RasDescriptor& rd_;
  const void* object_;
  const char* method_;
  Call* call_ = nullptr;  // owned; null unless the entry was taken
};

}  // namespace tessel::internal
