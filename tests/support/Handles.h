// Counting the handles that this process has open.
#pragma once

namespace tessel::test {

// How many handles were opened and not closed since the object was made, from the system's own table. What the first
// failure and the first record of a process open once and for all does not count, so that each test can also run alone.
class HandleBaseline {
 public:
  HandleBaseline();

  // Without the events that reset themselves. Only locks of the run-time and of the standard library make those: a lock
  // has one from the first time that a thread must wait for it, and when that is, is chance.
  long growth() const { return countedBy(count()) - countedBy(before_); }
  // With them: for what has locks of that kind of its own, or uses many, where a bound says that they are always the
  // same ones.
  long growthWithLocks() const { return count().all - before_.all; }

 private:
  struct Count {
    long all = 0;
    long locks = 0;
    bool operator==(const Count&) const = default;
  };

  static Count count();
  static long countedBy(const Count& count) { return count.all - count.locks; }

  Count before_;
};

}  // namespace tessel::test
