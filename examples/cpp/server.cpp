// Serves the pipe NAME until COUNT requests were answered: each request is a name, each reply a greeting.
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

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: server NAME COUNT\n";
    return 2;
  }
  try {
    Greeter greeter;
    const std::unique_ptr<tessel::IPCServer> server(tessel::IPCServer::newInstance(argv[1], greeter, -1));
    server->connect();
    std::cout << "ready" << std::endl;
    greeter.waitForRequests(std::atoi(argv[2]));
    // Waits for the replies that are on their way.
    server->disconnect();
    return 0;
  } catch (const tessel::NYXException& exception) {
    std::cerr << exception.getMessage() << '\n';
    return 1;
  }
}
