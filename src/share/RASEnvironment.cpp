#include <tessel/RASEnvironment.h>

#include <ostream>

namespace tessel {

RASEnvironment::RASEnvironment() : value_(UNSPECIFIED) {}
RASEnvironment::RASEnvironment(const RASEnvironmentValue& value) : value_(value) {}
RASEnvironment::RASEnvironment(const RASEnvironment& other) = default;
RASEnvironment& RASEnvironment::operator=(const RASEnvironment& other) = default;
RASEnvironment::~RASEnvironment() = default;

bool RASEnvironment::operator==(const RASEnvironment& other) const { return value_ == other.value_; }
bool RASEnvironment::operator!=(const RASEnvironment& other) const { return value_ != other.value_; }

std::string RASEnvironment::toString() const {
  switch (value_) {
    case DAEMON:
      return "DAEMON           ";
    case DAEMON_FOREGROUND:
      return "DAEMON_FOREGROUND";
    case UNITTEST:
      return "UNITTEST         ";
    case JAVA_APP:
      return "JAVA_APP         ";
    case UNSPECIFIED:
      return "UNSPECIFIED      ";
    default:
      return "???              ";
  }
}

int RASEnvironment::getValue() const { return value_; }

std::ostream& operator<<(std::ostream& stream, const RASEnvironment& environment) {
  return stream << environment.toString();
}

}  // namespace tessel
