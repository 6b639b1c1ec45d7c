// Every function of Java's interface that the library calls made to fail: its first call, its second, and so on.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "jvm/JniShim.h"
#include "support/Captures.h"

namespace tessel::test {

using Names = std::set<std::string>;

// Runs the round with one call failing; nothing is open after it. Returns whether there was such a call.
template <class Round>
bool failOnce(JNIEnv& env, const std::string& function, unsigned nth, JniShim::Failure failure, const Round& round) {
  SCOPED_TRACE(function + " " + std::to_string(nth) + (failure == JniShim::Failure::silent ? " silent" : ""));
  const Captures captures;
  JniShim shim(env);
  shim.failOn(function, nth, failure);
  round();
  EXPECT_EQ(shim.open().localReferences, 0);
  EXPECT_EQ(shim.open().globalReferences, 0);
  EXPECT_EQ(shim.open().strings, 0);
  EXPECT_EQ(shim.open().arrays, 0);
  return shim.hasFailed();
}

// Runs the round with each function failing in each of its calls, once with a Java exception and once without.
// Returns the functions that have failed.
template <class Round>
Names failEach(JNIEnv& env, const Round& round) {
  constexpr unsigned kMost = 100;  // no round makes more calls of one function
  Names failed;
  for (const JniShim::Failure failure : {JniShim::Failure::withException, JniShim::Failure::silent}) {
    for (const std::string& function : JniShim::functions()) {
      for (unsigned nth = 1; failOnce(env, function, nth, failure, round); ++nth) {
        failed.insert(function);
        if (nth == kMost) {
          ADD_FAILURE() << function << " has no end";
          break;
        }
      }
    }
  }
  return failed;
}

}  // namespace tessel::test
