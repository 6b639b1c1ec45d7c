#include <tessel/IPCTimeoutException.h>

namespace tessel {

IPCTimeoutException::IPCTimeoutException(const std::string& message) : IPCException(message) {}

IPCTimeoutException::IPCTimeoutException(const IPCTimeoutException& other) = default;

IPCTimeoutException::~IPCTimeoutException() = default;

IPCTimeoutException& IPCTimeoutException::operator=(const IPCTimeoutException& other) = default;

}  // namespace tessel
