// Has every line of standard input, a name, greeted by the server of the pipe NAME and prints the greetings.
#include <iostream>
#include <memory>
#include <string>

#include <tessel/tessel.h>

namespace {

// A client does not close its pipe by itself.
struct DisconnectAndDelete {
  void operator()(tessel::IPCClient* client) const {
    client->disconnect();
    delete client;
  }
};
using Client = std::unique_ptr<tessel::IPCClient, DisconnectAndDelete>;

std::string greetingFor(const std::string& name, const std::string& service) {
  const Client client(tessel::IPCClient::newInstance(service, tessel::NativeProperties()));
  client->connect();
  const tessel::IPCMessage reply = client->sendMessage(tessel::IPCMessage(1, name), -1);
  if (reply.getMessageId() == -1) throw tessel::NYXException("the server has gone");
  if (reply.getMessageStatus() != tessel::IPCMessage::MessageStatus::SUCCESS) {
    throw tessel::NYXException("the server says: " + reply.getMessageText());
  }
  return reply.getMessageText();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: client NAME\n";
    return 2;
  }
  try {
    for (std::string name; std::getline(std::cin, name);) std::cout << greetingFor(name, argv[1]) << std::endl;
    return 0;
  } catch (const tessel::NYXException& exception) {
    std::cerr << exception.getMessage() << '\n';
    return 1;
  }
}
