#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include <tessel/LogFileProperties.h>

namespace tessel {
namespace {

using Lines = std::vector<std::pair<std::string, std::string>>;

Lines linesOf(const LogFileProperties& properties) {
  return {properties.getApplicationProperties().begin(), properties.getApplicationProperties().end()};
}

TEST(LogFileProperties, KeepWhatTheyAreGiven) {
  const LogFileProperties properties("logs/trace%g.log", 1000, 5, true, false);
  EXPECT_EQ(properties.getPattern(), "logs/trace%g.log");
  EXPECT_EQ(properties.getLimit(), 1000);
  EXPECT_EQ(properties.getCount(), 5);
  EXPECT_TRUE(properties.isAppend());
  EXPECT_FALSE(properties.isCanRead());
  EXPECT_EQ(linesOf(properties), Lines());
}

TEST(LogFileProperties, ShowApplicationPropertiesInTheOrderOfTheirKeys) {
  LogFileProperties properties("p", 0, 0, false, true);
  properties.addApplicationProperty("b", "2");
  properties.addApplicationProperty("a", "1");
  properties.addApplicationProperty("b", "3");
  EXPECT_EQ(linesOf(properties), (Lines{{"a", "1"}, {"b", "3"}}));
  EXPECT_FALSE(properties.isAppend());
  EXPECT_TRUE(properties.isCanRead());
}

TEST(LogFileProperties, AreCopiedWhole) {
  LogFileProperties properties("p", -1, 2, true, true);
  properties.addApplicationProperty("a", "1");
  const LogFileProperties copy = properties;
  properties.addApplicationProperty("a", "2");
  EXPECT_EQ(copy.getPattern(), "p");
  EXPECT_EQ(copy.getLimit(), -1);
  EXPECT_EQ(copy.getCount(), 2);
  EXPECT_EQ(linesOf(copy), (Lines{{"a", "1"}}));
}

}  // namespace
}  // namespace tessel
