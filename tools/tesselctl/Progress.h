// The progress bar: one line on standard error that is drawn over and over.
#pragma once

#include <chrono>
#include <cstdint>

namespace tesselctl {

class Progress {
 public:
  // Does nothing unless it is wanted and standard error is a terminal.
  explicit Progress(bool wanted);
  // Leaves no trace on the terminal.
  ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // portion: from 0 to 1, negative when not known. Draws at most ten times a second.
  void show(double portion, std::uint64_t requests);

  // Before anything else is written to the terminal.
  void hide();

  // Before a line is written to standard output; the bar may stay when that is no terminal.
  void makeRoomForOutput();

 private:
  bool enabled_;
  bool sharesTerminal_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace tesselctl
