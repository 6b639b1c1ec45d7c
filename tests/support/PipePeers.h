// Servers and clients of the library, ready to use in a test.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>

#include <tessel/IPCClient.h>
#include <tessel/IPCServer.h>

namespace tessel::test {

// A name that no other pipe of this machine has.
std::string uniqueService();

// The system's text for an error number.
std::string systemText(unsigned long error);

// Id, status and text in one line, for comparison.
std::string shown(const IPCMessage& message);

// A connected server; stops at the end of its life.
class TestServer {
 public:
  explicit TestServer(IPCListener& listener, int maxConnections = -1, const std::string& name = uniqueService());

  const std::string& name() const { return name_; }
  IPCServer* operator->() const { return server_.get(); }

 private:
  std::string name_;
  std::unique_ptr<IPCServer> server_;
};

// A connected client; disconnects at the end of its life.
class TestClient {
 public:
  explicit TestClient(const std::string& name);
  ~TestClient();
  TestClient(const TestClient&) = delete;
  TestClient& operator=(const TestClient&) = delete;

  IPCMessage ask(long id, const std::string& text) { return client_->sendMessage(IPCMessage(id, text), 1); }
  IPCClient* operator->() const { return client_.get(); }

 private:
  std::unique_ptr<IPCClient> client_;
};

// A client connected as soon as a server of another process is there.
std::unique_ptr<TestClient> connectWhenServed(const std::string& name);

// Fails unless an echo server of that name answers a new client.
void expectServes(const std::string& name);

// Runs the action on a thread of its own. Returns whether it ended within the limit, and in any case not before its
// end: when there is none, the watchdog of the test program speaks.
template <class Action>
bool endsWithin(std::chrono::milliseconds limit, Action action) {
  std::future<void> running = std::async(std::launch::async, action);
  const bool inTime = running.wait_for(limit) == std::future_status::ready;
  running.get();
  return inTime;
}

}  // namespace tessel::test
