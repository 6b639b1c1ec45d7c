#include <tessel/IPCNotAvailableForUserException.h>

namespace tessel {

IPCNotAvailableForUserException::IPCNotAvailableForUserException(const std::string& message) : IPCException(message) {}

IPCNotAvailableForUserException::IPCNotAvailableForUserException(const IPCNotAvailableForUserException& other) =
    default;

IPCNotAvailableForUserException::~IPCNotAvailableForUserException() = default;

IPCNotAvailableForUserException& IPCNotAvailableForUserException::operator=(
    const IPCNotAvailableForUserException& other) = default;

}  // namespace tessel
