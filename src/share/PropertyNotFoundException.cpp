#include <tessel/PropertyNotFoundException.h>

namespace tessel {

PropertyNotFoundException::PropertyNotFoundException(const std::string& message) : NYXException(message) {}

PropertyNotFoundException::PropertyNotFoundException(const PropertyNotFoundException& other) = default;

PropertyNotFoundException::~PropertyNotFoundException() = default;

PropertyNotFoundException& PropertyNotFoundException::operator=(const PropertyNotFoundException& other) = default;

}  // namespace tessel
