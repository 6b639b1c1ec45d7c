#include "Summary.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace tesselctl {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

// The smallest value that so many of a hundred do not exceed. `values` are sorted and not empty.
double percentile(const std::vector<Summary::Duration>& values, std::size_t percent) {
  const std::size_t rank = (values.size() * percent + 99) / 100;
  return Milliseconds(values[rank - 1]).count();
}

}  // namespace

void Summary::addExchange(std::size_t bytesSent, std::size_t bytesReceived, Duration roundTrip) {
  bytesSent_ += bytesSent;
  bytesReceived_ += bytesReceived;
  roundTrips_.push_back(roundTrip);
}

std::string Summary::text() const {
  std::ostringstream text;
  text << "requests: " << roundTrips_.size() << ", failures: " << failures_ << ", sent: " << bytesSent_
       << " bytes, received: " << bytesReceived_ << " bytes";
  if (roundTrips_.empty()) return text.str();
  std::vector<Duration> sorted = roundTrips_;
  std::sort(sorted.begin(), sorted.end());
  text << std::fixed << std::setprecision(3) << "\nround trip: median " << percentile(sorted, 50)
       << " ms, 99th percentile " << percentile(sorted, 99) << " ms";
  return text.str();
}

}  // namespace tesselctl
