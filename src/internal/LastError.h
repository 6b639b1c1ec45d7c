// The system's error number, taken before anything can change it.
#pragma once

#include <string>

namespace tessel::internal {

class LastError {
 public:
  // Takes the calling thread's number now: declare it as the first thing after the failed call.
  LastError() noexcept;
  explicit LastError(unsigned long number) noexcept : number_(number) {}

  unsigned long number() const noexcept { return number_; }
  std::string numberText() const { return std::to_string(number_); }
  // The system's text, without the line end; like the texts of the catalogues in ASCII, with escapes.
  std::string text() const;

 private:
  unsigned long number_;
};

}  // namespace tessel::internal
