/// @file
#pragma once

#include <cstdint>
#include <string>

#include <tessel/VXBiface.h>

namespace tessel {

class RasDescriptor;

/// The queue-manager interface by a DLL of the middleware.
class TESSEL_API VXBifaceImpl : public VXBiface {
 public:
  VXBifaceImpl();
  /// Frees the library.
  ~VXBifaceImpl() override;

  void initialize(const std::string& productRoot) override;
  void connect(const std::string& queueManagerName, long* completionCode, long* reason) override;
  void disconnect(long* completionCode, long* reason) override;
  void cleanup() override;

 private:
  using ConnectFunction = void (*)(const char* name, std::int32_t* handle, long* completionCode, long* reason);
  using DisconnectFunction = void (*)(std::int32_t* handle, long* completionCode, long* reason);

  bool unload() noexcept;

  static const RasDescriptor rd;

  std::string libraryPath_;  // of the last initialize()
  std::int32_t connectionHandle_ = 0;
  ConnectFunction connectFunction_ = nullptr;
  DisconnectFunction disconnectFunction_ = nullptr;
  void* libraryModule_ = nullptr;
};

}  // namespace tessel
