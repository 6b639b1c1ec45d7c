#include <tessel/NYXUnsupportedOperationException.h>

namespace tessel {

NYXUnsupportedOperationException::NYXUnsupportedOperationException(const std::string& message)
    : NYXException(message) {}

NYXUnsupportedOperationException::NYXUnsupportedOperationException(const NYXUnsupportedOperationException& other) =
    default;

NYXUnsupportedOperationException::~NYXUnsupportedOperationException() = default;

NYXUnsupportedOperationException& NYXUnsupportedOperationException::operator=(
    const NYXUnsupportedOperationException& other) = default;

}  // namespace tessel
