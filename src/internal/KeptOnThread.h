// What a listener leaves on the thread that serves its client from one request to the next.
#pragma once

namespace tessel::internal {

// Belongs to a thread that serves a client, for as long as it does. Who keeps something expensive on the thread, such
// as its attachment to a Java virtual machine, leaves it to the thread to give that back before it blocks.
class KeptOnThread {
 public:
  using GiveBack = void (*)(void* object) noexcept;

  KeptOnThread() noexcept;
  ~KeptOnThread();
  KeptOnThread(const KeptOnThread&) = delete;
  KeptOnThread& operator=(const KeptOnThread&) = delete;

  // False when the calling thread does not serve a client, or keeps something already: then it is the caller's to give
  // back as before.
  static bool keep(GiveBack way, void* object) noexcept;

  bool any() const noexcept { return giveBack_ != nullptr; }
  // Gives back what is kept.
  void release() noexcept;

 private:
  KeptOnThread*& innermost_;  // the thread's own
  KeptOnThread* const outer_;
  GiveBack giveBack_ = nullptr;
  void* object_ = nullptr;
};

}  // namespace tessel::internal
