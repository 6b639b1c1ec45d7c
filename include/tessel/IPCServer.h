/// @file
#pragma once

#include <string>

#include <tessel/IPC.h>

namespace tessel {

class IPCListener;

/// Serves a pipe: accepts clients and has their requests answered by a listener.
///
/// Only the local Administrators and the user that runs the server may open the pipe.
class TESSEL_API IPCServer : public IPC {
 public:
  /// @param listener not owned; must outlive the server.
  /// @param maxConnections clients served at once; negative for no limit. One more is accepted and dropped at once.
  /// @param adminGroupName carried and traced, without effect on the pipe's access list.
  /// @return a server that is not connected, owned by the caller.
  static IPCServer* newInstance(const std::string& name, IPCListener& listener, int maxConnections,
                                const std::string& adminGroupName);
  /// With an empty group name.
  static IPCServer* newInstance(const std::string& name, IPCListener& listener, int maxConnections);

  ~IPCServer() override;

  /// Creates the pipe and starts to accept clients.
  ///
  /// @throws NYXException KTBNV0065 when connected already, KTBNV0114 or KTBNV0087 when the pipe cannot be made, for
  ///         example because another server has the name; KTBNV0008 and KTBNV0013 when the thread cannot be started.
  void connect() override = 0;

  /// Stops accepting, ends every worker and closes the pipe.
  ///
  /// A worker inside IPCListener::onMessage is waited for; its client gets the reply. A worker that waits for its
  /// client is ended; one whose client never reads is given two seconds. Afterwards the server may connect again.
  /// @throws NYXException KTBNV0062 when not connected; also when called from inside onMessage, which would wait for
  ///         itself: nothing is changed then.
  void disconnect() override = 0;

  IPCListener& getListener();

 protected:
  IPCServer(const std::string& name, IPCListener& listener, int maxConnections, const std::string& adminGroupName);

  int getMaxConnections() const;
  std::string getAdminGroupName() const;

 private:
  IPCListener& listener_;
  int maxConnections_;
  std::string adminGroupName_;
};

}  // namespace tessel
