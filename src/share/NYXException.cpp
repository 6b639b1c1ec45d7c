#include <tessel/NYXException.h>

#include <ostream>
#include <sstream>

#include <tessel/NLS.h>

#include "internal/Bundles.h"
#include "internal/TypeName.h"

namespace tessel {

NYXException::NYXException(const std::string& message) : message_(message), cause_(nullptr) {}

NYXException::NYXException(const std::string& message, const NYXException* cause)
    : message_(message), cause_(cause ? new NYXException(*cause) : nullptr) {}

NYXException::NYXException(const NYXException& other)
    : message_(other.message_), cause_(other.cause_ ? new NYXException(*other.cause_) : nullptr) {}

NYXException::~NYXException() { delete cause_; }

// The shared cause is the documented behaviour of assignment.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp)
NYXException& NYXException::operator=(const NYXException& other) = default;

std::string NYXException::getMessage() const { return message_; }

NYXException NYXException::getCause() const { return *cause_; }

std::string NYXException::toString() const {
  std::ostringstream text;
  text << internal::classText(typeid(*this)) << ": " << message_;
  if (cause_) {
    text << ' ' << NLS::format(internal::elementsBundle(), "KTBNV_CAUSED_BY") << ' ' << *cause_;
  }
  return text.str();
}

std::ostream& operator<<(std::ostream& stream, const NYXException& exception) { return stream << exception.toString(); }

}  // namespace tessel
