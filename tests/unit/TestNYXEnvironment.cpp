#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <tessel/NYXEnvironment.h>
#include <tessel/PropertyNotFoundException.h>

#include "support/Thrown.h"

namespace tessel {
namespace {

TEST(NYXEnvironment, GivesTheValueThatWasSet) {
  NYXEnvironment::setProperty("environment.one", "value");
  EXPECT_EQ("value", NYXEnvironment::getProperty("environment.one"));
}

TEST(NYXEnvironment, FirstValueOfAKeyStays) {
  NYXEnvironment::setProperty("environment.a", "1");
  NYXEnvironment::setProperty("environment.a", "2");
  EXPECT_EQ("1", NYXEnvironment::getProperty("environment.a"));
}

TEST(NYXEnvironment, MissingKeyIsThrownByItsName) {
  EXPECT_EQ("environment.missing",
            test::thrownBy<PropertyNotFoundException>([] { NYXEnvironment::getProperty("environment.missing"); }));
}

TEST(NYXEnvironment, EmptyKeysAndValuesAreKeysAndValues) {
  NYXEnvironment::setProperty("environment.empty", "");
  NYXEnvironment::setProperty("environment.empty", "late");
  EXPECT_EQ("", NYXEnvironment::getProperty("environment.empty"));
  NYXEnvironment::setProperty("", "of the empty key");
  EXPECT_EQ("of the empty key", NYXEnvironment::getProperty(""));
}

TEST(NYXEnvironment, KeysDifferByCaseAndBytes) {
  NYXEnvironment::setProperty("environment.key", "lower");
  NYXEnvironment::setProperty("environment.Key", "upper");
  NYXEnvironment::setProperty("environment.\xE9", "latin");
  EXPECT_EQ("lower", NYXEnvironment::getProperty("environment.key"));
  EXPECT_EQ("upper", NYXEnvironment::getProperty("environment.Key"));
  EXPECT_EQ("latin", NYXEnvironment::getProperty("environment.\xE9"));
}

// All threads see the same value for each key, whoever was first.
TEST(NYXEnvironment, ThreadsThatSetTheSameKeysAgreeOnTheFirstValues) {
  constexpr int kThreads = 8;
  constexpr int kKeys = 500;
  std::vector<std::vector<std::string>> seen(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&mine = seen[static_cast<std::size_t>(i)], i] {
      for (int key = 0; key < kKeys; ++key) {
        const std::string name = "environment.shared." + std::to_string(key);
        NYXEnvironment::setProperty(name, std::to_string(i));
        mine.push_back(NYXEnvironment::getProperty(name));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& mine : seen) EXPECT_EQ(seen.front(), mine);
}

}  // namespace
}  // namespace tessel
