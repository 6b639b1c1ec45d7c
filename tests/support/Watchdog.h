// Ends a test program that hangs, and says in which test; says what ends one by an exception.
#pragma once

#include <gtest/gtest.h>

#include <chrono>

namespace tessel::test {

inline constexpr std::chrono::seconds kTestLimit{60};

// A listener: appended once, before the tests run. A test that runs longer than its limit, or lets an exception leave a
// thread, is named on the standard error that the process began with, and the process ends with code 3.
class Watchdog : public testing::EmptyTestEventListener {
 public:
  Watchdog();

  void OnTestStart(const testing::TestInfo& info) override;
  void OnTestEnd(const testing::TestInfo& info) override;
};

// Gives the running test another limit, counted from now.
void setTestLimit(std::chrono::seconds limit);

}  // namespace tessel::test
