#include <tessel/NYXMessageTooShortException.h>

namespace tessel {

NYXMessageTooShortException::NYXMessageTooShortException(const std::string& message) : NYXException(message) {}

NYXMessageTooShortException::NYXMessageTooShortException(const NYXMessageTooShortException& other) = default;

NYXMessageTooShortException::~NYXMessageTooShortException() = default;

NYXMessageTooShortException& NYXMessageTooShortException::operator=(const NYXMessageTooShortException& other) = default;

}  // namespace tessel
