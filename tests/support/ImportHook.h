// Puts a function of the test in place of one that the library imports from the system.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>

namespace tessel::test {

// One entry of the import table of the loaded tesselnative.dll, exchanged for the life of the object. Only calls
// that the library makes itself are affected, those of the run-time inside it included.
class ImportSlot {
 public:
  // Throws std::runtime_error when the library does not import the function.
  ImportSlot(const char* function, void* replacement);
  ~ImportSlot();
  ImportSlot(const ImportSlot&) = delete;
  ImportSlot& operator=(const ImportSlot&) = delete;

  void* original() const { return original_; }

 private:
  void** slot_;
  void* original_;
};

void setLastError(unsigned long error);

// A function's name as a template argument.
template <std::size_t size>
struct ImportName {
  // NOLINTNEXTLINE(google-explicit-constructor): a literal is the name
  constexpr ImportName(const char (&name)[size]) { std::copy_n(name, size, text); }
  char text[size]{};
};

// Hooks one imported function and counts its calls. Until told otherwise every call reaches the system:
//
//   ImportHook<"CreateThread", decltype(CreateThread)> hook;
//   hook.failOnce(12345);                       // the next call: last error 12345, result null
//   hook.failAlways(5, INVALID_HANDLE_VALUE);   // every call from now on, with this result
//   hook.replaceWith([&](HANDLE h, DWORD ms) { return h == mine ? WAIT_ABANDONED : hook.callOriginal(h, ms); });
//   hook.passOn();                              // back to the system
//
// At most one hook of a function exists at a time. Calls may come from any thread; the object must outlive the
// calls under way.
template <ImportName name, class Function>
class ImportHook;

template <ImportName name, class Result, class... Arguments>
class ImportHook<name, Result(Arguments...)> {
 public:
  using Replacement = std::function<Result(Arguments...)>;
  // A function without a result takes this one for a failure that changes only the last error.
  struct Nothing {};
  using Value = std::conditional_t<std::is_void_v<Result>, Nothing, Result>;

  ImportHook() {
    const std::lock_guard guard(mutex_);
    current = this;
    slot_.emplace(name.text, reinterpret_cast<void*>(&enter));
  }
  ImportHook(const ImportHook&) = delete;
  ImportHook& operator=(const ImportHook&) = delete;

  void replaceWith(Replacement replacement) { replace(std::move(replacement), false); }
  void failAlways(unsigned long error, Value result = Value()) { replace(failure(error, result), false); }
  void failOnce(unsigned long error, Value result = Value()) { replace(failure(error, result), true); }

  void passOn() {
    const std::lock_guard guard(mutex_);
    replacement_.reset();
  }

  Result callOriginal(Arguments... arguments) const {
    return reinterpret_cast<Result (*)(Arguments...)>(slot_->original())(arguments...);
  }

  // How often the library called the function, failed calls included.
  unsigned calls() const {
    const std::lock_guard guard(mutex_);
    return calls_;
  }

 private:
  static Result enter(Arguments... arguments) {
    ImportHook& hook = *current;
    const std::shared_ptr<const Replacement> replacement = hook.take();
    return replacement ? (*replacement)(arguments...) : hook.callOriginal(arguments...);
  }

  std::shared_ptr<const Replacement> take() {
    const std::lock_guard guard(mutex_);
    ++calls_;
    return onlyOnce_ ? std::exchange(replacement_, nullptr) : replacement_;
  }

  static Replacement failure(unsigned long error, Value result) {
    return [error, result](Arguments...) {
      setLastError(error);
      return static_cast<Result>(result);
    };
  }

  void replace(Replacement replacement, bool once) {
    auto shared = std::make_shared<const Replacement>(std::move(replacement));
    const std::lock_guard guard(mutex_);
    replacement_ = std::move(shared);
    onlyOnce_ = once;
  }

  static inline ImportHook* current = nullptr;

  mutable std::mutex mutex_;
  std::shared_ptr<const Replacement> replacement_;
  bool onlyOnce_ = false;
  unsigned calls_ = 0;
  std::optional<ImportSlot> slot_;  // last: the table is put back before anything else goes
};

}  // namespace tessel::test
