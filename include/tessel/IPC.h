/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

/// One end of a local request/reply channel, the named pipe `\\.\pipe\` + service name.
class TESSEL_API IPC {
 public:
  IPC(const IPC& other) = delete;
  IPC& operator=(const IPC& other) = delete;
  virtual ~IPC();

  virtual void connect() = 0;
  virtual void disconnect() = 0;

 protected:
  explicit IPC(const std::string& serviceName);

  std::string getServiceName() const;

 private:
  std::string serviceName_;
};

}  // namespace tessel
