#include "Progress.h"

#include <string>

#include "Output.h"

namespace tesselctl {
namespace {

constexpr std::size_t kWidth = 40;
constexpr std::size_t kLine = 79;
constexpr std::chrono::milliseconds kPeriod(100);

std::string bar(double portion) {
  const auto done = static_cast<std::size_t>(portion * static_cast<double>(kWidth));
  const auto percent = std::to_string(static_cast<int>(portion * 100));
  return '[' + std::string(done, '#') + std::string(kWidth - done, '.') + "] " + percent + " %  ";
}

}  // namespace

Progress::Progress(bool wanted)
    : enabled_(wanted && errorOutputIsTerminal()),
      sharesTerminal_(outputIsTerminal()),
      next_(std::chrono::steady_clock::now()) {}

void Progress::show(double portion, std::uint64_t requests) {
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return;
  next_ = now + kPeriod;
  std::string text = portion < 0 ? std::string() : bar(portion);
  text += std::to_string(requests) + " requests";
  text.resize(kLine, ' ');
  printNote('\r' + text);
  drawn_ = true;
}

void Progress::hide() {
  if (!drawn_) return;
  printNote('\r' + std::string(kLine, ' ') + '\r');
  drawn_ = false;
}

void Progress::makeRoomForOutput() {
  if (sharesTerminal_) hide();
}

}  // namespace tesselctl
