/// @file
#pragma once

#include <tessel/Export.h>
#include <tessel/IPCMessage.h>

namespace tessel {

/// Answers the requests of an IPCServer.
class TESSEL_API IPCListener {
 public:
  IPCListener();
  IPCListener(const IPCListener& other);
  IPCListener& operator=(const IPCListener& other);
  virtual ~IPCListener();

  /// Called on the worker thread of each connected client, from all of them at once.
  ///
  /// @return the reply.
  /// @throws NYXException the client then gets a reply with the request's id, status 1 and the exception's message.
  ///         A standard exception is a defect of the listener: it is reported to the event log and captured, and the
  ///         client loses its connection without a reply. Anything else that leaves ends the process.
  virtual IPCMessage onMessage(const IPCMessage& request) = 0;
};

}  // namespace tessel
