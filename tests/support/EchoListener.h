// What servers under test answer.
#pragma once

#include <atomic>

#include <tessel/IPCListener.h>
#include <tessel/IPCMessage.h>
#include <tessel/NYXException.h>

#include "support/Event.h"

namespace tessel::test {

// Sends every request back.
class EchoListener : public IPCListener {
 public:
  IPCMessage onMessage(const IPCMessage& request) override {
    ++requests_;
    return request;
  }

  int requests() const { return requests_; }

 private:
  std::atomic<int> requests_{0};
};

// Fails every request with the message "boom".
class FailingListener : public IPCListener {
 public:
  IPCMessage onMessage(const IPCMessage&) override { throw NYXException("boom"); }
};

// Sends requests back once it is released; until then its workers are inside onMessage.
class BlockingListener : public IPCListener {
 public:
  IPCMessage onMessage(const IPCMessage& request) override {
    ++inside_;
    entered_.set();
    released_.wait();
    return request;
  }

  // Waits until a worker is inside onMessage.
  bool waitEntered() { return entered_.wait(); }
  void release() { released_.set(); }
  int entries() const { return inside_; }

 private:
  std::atomic<int> inside_{0};
  Event entered_;
  Event released_;
};

}  // namespace tessel::test
