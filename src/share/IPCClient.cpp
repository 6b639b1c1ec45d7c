#include <tessel/IPCClient.h>

#include <ostream>

namespace tessel {

IPCClient::IPCClient(const std::string& serviceName, const NativeProperties& properties)
    : IPC(serviceName), properties_(properties) {}

IPCClient::~IPCClient() = default;

std::ostream& operator<<(std::ostream& stream, const IPCClient& client) {
  return stream << "IPCClient serviceName:" << client.getServiceName();
}

}  // namespace tessel
