/// @file
#pragma once

#include <atomic>
#include <string>

#include <tessel/IPCClient.h>

struct _OVERLAPPED;  // NOLINT: the name is the system's

namespace tessel {

class RasDescriptor;

/// The client over a Windows named pipe.
///
/// Looks a bounded number of times whether the reply is there before it begins to read: a server that answers at
/// once is then not made to wait for a polling interval, and a slow one costs no processor time.
class TESSEL_API IPCClientImpl : public IPCClient {
 public:
  /// As IPCClient::newInstance().
  IPCClientImpl(const std::string& serviceName, const NativeProperties& properties);
  /// Does not close the pipe: callers disconnect first.
  ~IPCClientImpl() override;

  void connect() override;
  void disconnect() override;
  IPCMessage sendMessage(const IPCMessage& message, long timeoutMillis) override;
  void cancel() override;

  /// @param milliseconds how long connect() waits for a busy pipe; 20000 unless set.
  void setBusyWait(unsigned long milliseconds);

 private:
  struct Reply;

  void* open(const std::string& path);
  void send(const IPCMessage& message);
  void lookForReply() const;
  void receive(Reply& reply, unsigned long interval);
  void readPart(Reply& reply, void* event, unsigned long interval);
  void expectTotal(Reply& reply) const;
  unsigned long poll(_OVERLAPPED& overlapped, unsigned long interval) const;
  bool sleep(unsigned long milliseconds) const;
  void cancelRead(_OVERLAPPED& overlapped) const;

  static const RasDescriptor rd;

  void* pipeHandle_ = nullptr;
  unsigned long busyWait_;
  std::atomic<bool> cancelled_{false};
};

}  // namespace tessel
