#include "support/PipePeers.h"

#include <windows.h>

#include <atomic>
#include <sstream>

#include <tessel/IPCNotFoundException.h>
#include <tessel/NYXUtils.h>

namespace tessel::test {

std::string uniqueService() {
  static std::atomic<int> count{0};
  return "tessel-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
}

std::string systemText(unsigned long error) { return NYXUtils::getLastErrorMessage(static_cast<int>(error)); }

std::string shown(const IPCMessage& message) {
  std::ostringstream text;
  text << message;
  return text.str();
}

TestServer::TestServer(IPCListener& listener, int maxConnections, const std::string& name)
    : name_(name), server_(IPCServer::newInstance(name, listener, maxConnections)) {
  server_->connect();
}

TestClient::TestClient(const std::string& name) : client_(IPCClient::newInstance(name, NativeProperties())) {
  client_->connect();
}

TestClient::~TestClient() { client_->disconnect(); }

std::unique_ptr<TestClient> connectWhenServed(const std::string& name) {
  for (;;) {
    try {
      return std::make_unique<TestClient>(name);
    } catch (const IPCNotFoundException&) {
      Sleep(1);  // the process is still starting
    }
  }
}

void expectServes(const std::string& name) {
  TestClient client(name);
  EXPECT_EQ(shown(client.ask(4711, "still there")), "IPCMessage id:4711 status:0 text :still there");
}

}  // namespace tessel::test
