/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/IPC.h>
#include <tessel/IPCMessage.h>
#include <tessel/NativeProperties.h>

namespace tessel {

/// Sends requests to a pipe server and waits for the replies. One object serves one caller at a time.
class TESSEL_API IPCClient : public IPC {
 public:
  /// @param serviceName the name given to the server.
  /// @param properties copied; no property is read from them.
  /// @return a client that is not connected, owned by the caller, who disconnects it before deleting it.
  static IPCClient* newInstance(const std::string& serviceName, const NativeProperties& properties);

  ~IPCClient() override;

  /// Opens the server's pipe; waits up to 20 seconds while all its instances are busy.
  ///
  /// @throws IPCNotFoundException KTBNV0066 when there is no server of that name.
  /// @throws NYXException KTBNV0065 when connected already, KTBNV0177 when access is denied, KTBNV0067 when the pipe
  ///         stays busy, KTBNV0066 when it cannot be opened otherwise, KTBNV0068 when it cannot be read by messages.
  void connect() override = 0;

  /// Closes the pipe; harmless when it is closed.
  void disconnect() override = 0;

  /// Sends a request and waits for its reply, without limit.
  ///
  /// After any failure disconnect: what is left in the pipe belongs to the failed exchange.
  /// @param timeoutMillis not a limit but the polling interval in milliseconds, and so the least delay of a reply
  ///        that is not there at once; -1 and every other negative value count as 1, 0 gives up the time slice.
  /// @param message the request; the reply's id is the server's business.
  /// @return the reply; the default message (id -1) when the server was lost while its reply was awaited.
  /// @throws NYXException KTBNV0062 when not connected, KTBNV0063 when the request cannot be sent, KTBNV0064 when
  ///         the reply cannot be read, the server was lost before or the exchange was cancelled, and what the parsing
  ///         constructor of IPCMessage throws.
  virtual IPCMessage sendMessage(const IPCMessage& message, long timeoutMillis) = 0;

  /// Ends the exchange that another thread has under way: its sendMessage() throws KTBNV0064 within 100 milliseconds
  /// unless the reply is there already. Further exchanges fail with KTBNV0062 until the client was disconnected and
  /// connected again. Any thread; the only member that may be called while another one runs.
  virtual void cancel() = 0;

 protected:
  /// As newInstance().
  IPCClient(const std::string& serviceName, const NativeProperties& properties);

 private:
  friend TESSEL_API std::ostream& operator<<(std::ostream& stream, const IPCClient& client);

  NativeProperties properties_;
};

/// Writes the service name.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const IPCClient& client);

}  // namespace tessel
