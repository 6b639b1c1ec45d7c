#include <tessel/IPCServer.h>

namespace tessel {

IPCServer::IPCServer(const std::string& name, IPCListener& listener, int maxConnections,
                     const std::string& adminGroupName)
    : IPC(name), listener_(listener), maxConnections_(maxConnections), adminGroupName_(adminGroupName) {}

IPCServer::~IPCServer() = default;

IPCListener& IPCServer::getListener() { return listener_; }

int IPCServer::getMaxConnections() const { return maxConnections_; }

std::string IPCServer::getAdminGroupName() const { return adminGroupName_; }

}  // namespace tessel
