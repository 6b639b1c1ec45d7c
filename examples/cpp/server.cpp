// Serves the pipe NAME until COUNT requests were answered: each request is a name, each reply a greeting. Events and
// the trace of one class go to files in LOGS.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <semaphore>
#include <string>

#include <tessel/tessel.h>

namespace {

// Called on a thread of its own for each client, from all of them at once.
class Greeter : public tessel::IPCListener {
 public:
  tessel::IPCMessage onMessage(const tessel::IPCMessage& request) override {
    const std::string name = request.getMessageText();
    answered_.release();
    // The client gets the text of the exception in a reply with status 1.
    if (name.empty()) throw tessel::NYXException("whom am I to greet?");
    return {request.getMessageId(), "Hello, " + name + "!"};
  }

  void waitForRequests(int count) {
    for (int i = 0; i < count; ++i) answered_.acquire();
  }

 private:
  std::counting_semaphore<> answered_{0};
};

// Before anything else, so that nothing is missed.
void startDiagnostics(const std::string& logs) {
  const auto file = [&logs](const char* pattern) {
    constexpr int kBytes = 1000000;
    constexpr int kGenerations = 3;
    return tessel::LogFileProperties(logs + pattern, kBytes, kGenerations, true, false);
  };
  tessel::NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", logs);
  tessel::RAS::initialize(tessel::RASEnvironment::DAEMON, file("/event%g.log"), file("/trace%g.log"),
                          "com.kelvo.tessel.nativ");
  tessel::RAS::setLevel("com.kelvo.tessel.nativ.IPCClientRunnable=FLOW");
}

void serve(const std::string& name, int count) {
  Greeter greeter;
  const std::unique_ptr<tessel::IPCServer> server(tessel::IPCServer::newInstance(name, greeter, -1));
  server->connect();
  std::cout << "ready" << std::endl;
  greeter.waitForRequests(count);
  // Waits for the replies that are on their way.
  server->disconnect();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: server NAME COUNT LOGS\n";
    return 2;
  }
  try {
    startDiagnostics(argv[3]);
    serve(argv[1], std::atoi(argv[2]));
    tessel::RAS::shutdown();
    return 0;
  } catch (const tessel::NYXException& exception) {
    std::cerr << exception.getMessage() << '\n';
    return 1;
  }
}
