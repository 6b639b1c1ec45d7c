#include <tessel/TraceLevel.h>

#include <ostream>

namespace tessel {

TraceLevel::TraceLevel() : value_(OFF) {}
TraceLevel::TraceLevel(const TraceLevelValue& value) : value_(value) {}
TraceLevel::TraceLevel(const TraceLevel& other) = default;
TraceLevel& TraceLevel::operator=(const TraceLevel& other) = default;
TraceLevel::~TraceLevel() = default;

bool TraceLevel::operator==(const TraceLevel& other) const { return value_ == other.value_; }
bool TraceLevel::operator!=(const TraceLevel& other) const { return value_ != other.value_; }
bool TraceLevel::operator>=(const TraceLevel& other) const { return value_ >= other.value_; }

std::string TraceLevel::toString() const {
  switch (value_) {
    case VERBOSE:
      return "VERBOSE ";
    case MODERATE:
      return "MODERATE";
    case FLOW:
      return "FLOW    ";
    case OFF:
      return "OFF     ";
    default:
      return "???     ";
  }
}

int TraceLevel::getValue() const { return value_; }

std::ostream& operator<<(std::ostream& stream, const TraceLevel& level) { return stream << level.toString(); }

}  // namespace tessel
