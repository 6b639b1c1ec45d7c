/// @file
#pragma once

#include <string>

#include <tessel/IPC.h>

namespace tessel {

class IPCListener;

/// Serves a pipe: accepts clients and has their requests answered by a listener.
///
/// Only the local Administrators and the user that runs the server may open the pipe. connect() and disconnect() are
/// for one thread at a time; the listener is called from other threads.
class TESSEL_API IPCServer : public IPC {
 public:
  /// @param name the service; the pipe is `\\.\pipe\` and this name.
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
  ///         example because another server has the name; KTBNV0008, KTBNV0013 and KTBNV0017 when the thread cannot be
  ///         started or watched. The server is not connected then.
  void connect() override = 0;

  /// Stops accepting, ends every worker and closes the pipe.
  ///
  /// A worker inside IPCListener::onMessage is waited for; its client gets the reply. A worker that waits for its
  /// client is ended; one whose client does not read is given two seconds for its reply. Afterwards the server may
  /// connect again.
  /// @throws NYXException KTBNV0062 when not connected; also when called from inside onMessage, which would wait for
  ///         itself: nothing is changed then. KTBNV0015 or KTBNV0016 when the listener thread cannot be waited for:
  ///         call again.
  void disconnect() override = 0;

  /// @return the listener given at construction.
  IPCListener& getListener();

 protected:
  /// As newInstance().
  IPCServer(const std::string& name, IPCListener& listener, int maxConnections, const std::string& adminGroupName);

  /// @return the limit of connections; negative for none.
  int getMaxConnections() const;
  /// @return the group name, empty unless given.
  std::string getAdminGroupName() const;

 private:
  IPCListener& listener_;
  int maxConnections_;
  std::string adminGroupName_;
};

}  // namespace tessel
