// For what happens only once in the life of a process.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

namespace tessel::test {

// Runs the body, expectations included, in a process in which nothing has happened yet.
inline void inFreshProcess(void (*body)()) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto run = [body] {
    body();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace tessel::test
