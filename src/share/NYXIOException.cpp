#include <tessel/NYXIOException.h>

namespace tessel {

NYXIOException::NYXIOException(const std::string& message) : NYXException(message) {}

NYXIOException::NYXIOException(const NYXIOException& other) = default;

NYXIOException::~NYXIOException() = default;

NYXIOException& NYXIOException::operator=(const NYXIOException& other) = default;

}  // namespace tessel
