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

  /// Opens this end. @throws NYXException see IPCServer::connect and IPCClient::connect.
  virtual void connect() = 0;

  /// Closes this end. See IPCServer::disconnect and IPCClient::disconnect.
  virtual void disconnect() = 0;

 protected:
  /// @param serviceName the pipe's name behind `\\.\pipe\`; copied.
  explicit IPC(const std::string& serviceName);

  /// @return a copy of the name.
  std::string getServiceName() const;

 private:
  std::string serviceName_;
};

}  // namespace tessel
