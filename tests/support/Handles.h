// Counting the handles that this process has open.
#pragma once

namespace tessel::test {

// Exact, from the system's own table.
long openHandles();

// How many handles were opened and not closed since the object was made.
class HandleBaseline {
 public:
  HandleBaseline() : before_(openHandles()) {}
  long growth() const { return openHandles() - before_; }

 private:
  long before_;
};

}  // namespace tessel::test
