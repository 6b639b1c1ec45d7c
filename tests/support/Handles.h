// Counting the handles that this process has open.
#pragma once

namespace tessel::test {

// Exact, from the system's own table.
long openHandles();

// How many handles were opened and not closed since the object was made. What the first failure and the first record
// of a process open once and for all does not count, so that each test can also run alone.
class HandleBaseline {
 public:
  HandleBaseline();
  long growth() const { return openHandles() - before_; }

 private:
  long before_ = 0;
};

}  // namespace tessel::test
