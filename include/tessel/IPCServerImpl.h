/// @file
#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include <tessel/IPCServer.h>

namespace tessel {

class IPCClientConnectionListener;
class NYXThreadImpl;
class RasDescriptor;

/// The server over a Windows named pipe: a listener thread and one worker thread for each client.
class TESSEL_API IPCServerImpl : public IPCServer {
 public:
  /// As IPCServer::newInstance().
  IPCServerImpl(const std::string& name, IPCListener& listener, int maxConnections, const std::string& adminGroupName);
  /// Disconnects when connected. What cannot be ended, as from inside onMessage, is captured and left behind.
  ~IPCServerImpl() override;

  void connect() override;
  void disconnect() override;

 private:
  friend TESSEL_API std::ostream& operator<<(std::ostream& stream, const IPCServerImpl& server);

  void startListening();
  void endListening();
  void disconnectUnlessServing();
  void discard(const char* method) noexcept;

  static const RasDescriptor rd;

  std::unique_ptr<IPCClientConnectionListener> connectionListener_;  // null when not connected
  std::unique_ptr<NYXThreadImpl> listenerThread_;                    // null when not connected
  bool started_ = false;                                             // whether that thread was started
};

/// Writes name, limit, group and whether the server is connected.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const IPCServerImpl& server);

}  // namespace tessel
