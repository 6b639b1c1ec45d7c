#include <tessel/IPC.h>

namespace tessel {

IPC::IPC(const std::string& serviceName) : serviceName_(serviceName) {}

IPC::~IPC() = default;

std::string IPC::getServiceName() const { return serviceName_; }

}  // namespace tessel
