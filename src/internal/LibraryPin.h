// Keeps the library in memory.
#pragma once

namespace tessel::internal {

// While one lives the library is not unloaded, whatever its users do: for threads of its own that would otherwise
// find their code gone. To be destroyed by a caller who keeps the library loaded himself.
class LibraryPin {
 public:
  LibraryPin() noexcept;
  ~LibraryPin();
  LibraryPin(const LibraryPin&) = delete;
  LibraryPin& operator=(const LibraryPin&) = delete;

 private:
  void* module_ = nullptr;
};

}  // namespace tessel::internal
