// The one line by which a method reports itself.
#pragma once

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

// Traces the entry now and the exit when the scope ends, also by an exception. With trace off it costs one relaxed
// load and one test of a register. The exit is sent only if the entry was taken.
class MethodTrace {
 public:
  template <class... Arguments>
  MethodTrace(const RasDescriptor& descriptor, const void* object, const char* method,
              const Arguments&... arguments) noexcept
      : rd_(descriptor), object_(object), method_(method) {
    if (traceMayBeOn()) [[unlikely]]
      enter(arguments...);
  }
  ~MethodTrace() {
    if (entered_) [[unlikely]]
      leave();
  }
  MethodTrace(const MethodTrace&) = delete;
  MethodTrace& operator=(const MethodTrace&) = delete;

  // The value to return, shown by the exit record: `return trace.result(value);`
  template <class T>
  const T& result(const T& value) noexcept {
    if (entered_) [[unlikely]]
      remember(value);
    return value;
  }

  template <class... Arguments>
  void data(const TraceLevel::TraceLevelValue level, const Arguments&... arguments) const noexcept {
    if (traceMayBeOn()) [[unlikely]]
      sendData(level, arguments...);
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
      sendThrowing(exception);
    return exception;
  }

 private:
  template <class... Arguments>
  [[gnu::noinline, gnu::cold]] void enter(const Arguments&... arguments) noexcept {
    try {
      if (!rd_.isFlowOn()) return;
      entered_ = sendEntry(traceText(arguments)...);
    } catch (...) {  // NOLINT(bugprone-empty-catch): trace never takes the traced code down
    }
  }

  template <class... Texts>
  bool sendEntry(const Texts&... texts) const {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg)
    return Trace::getInstance().traceMethodEntry(rd_, object_, method_, static_cast<int>(sizeof...(texts)), &texts...);
  }

  template <class T>
  [[gnu::noinline, gnu::cold]] void remember(const T& value) noexcept {
    try {
      result_ = new std::string(traceText(value));
      resultType_ = traceType<T>();
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }
  }

  template <class... Arguments>
  [[gnu::noinline, gnu::cold]] void sendData(const TraceLevel& level, const Arguments&... arguments) const noexcept {
    try {
      if (rd_.isOn(level)) Trace::data(rd_, level, object_, method_, traceText(arguments)...);
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }
  }

  void sendThrowing(const NYXException& exception) const noexcept;
  void leave() noexcept;

  const RasDescriptor& rd_;
  const void* object_;
  const char* method_;
  bool entered_ = false;
  const char* resultType_ = nullptr;
  std::string* result_ = nullptr;  // owned; only while trace is on
};

}  // namespace tessel::internal
