#include <tessel/IPCNotFoundException.h>

namespace tessel {

IPCNotFoundException::IPCNotFoundException(const std::string& message) : IPCException(message) {}

IPCNotFoundException::IPCNotFoundException(const IPCNotFoundException& other) = default;

IPCNotFoundException::~IPCNotFoundException() = default;

IPCNotFoundException& IPCNotFoundException::operator=(const IPCNotFoundException& other) = default;

}  // namespace tessel
