#include <tessel/IPCException.h>

namespace tessel {

IPCException::IPCException(const std::string& message) : NYXException(message) {}

IPCException::IPCException(const IPCException& other) = default;

IPCException::~IPCException() = default;

IPCException& IPCException::operator=(const IPCException& other) = default;

}  // namespace tessel
