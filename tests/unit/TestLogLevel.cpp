#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>

#include <tessel/LogLevel.h>
#include <tessel/LogRecordType.h>
#include <tessel/RASEnvironment.h>
#include <tessel/TraceLevel.h>

namespace tessel {
namespace {

template <class Value>
std::string streamed(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

struct LevelRow {
  int value;
  LogLevel::LogLevelValue level;
  const char* name;
  char indicator;
};

const std::array<LevelRow, 11> kLevels{{{0, LogLevel::ALL, "ALL    ", 'A'},
                                        {10, LogLevel::FINEST, "FINEST ", 'F'},
                                        {20, LogLevel::FINER, "FINER  ", 'F'},
                                        {30, LogLevel::FINE, "FINE   ", 'F'},
                                        {40, LogLevel::CONFIG, "CONFIG ", 'C'},
                                        {50, LogLevel::INFO, "INFO   ", 'I'},
                                        {60, LogLevel::WARNING, "WARNING", 'W'},
                                        {70, LogLevel::SEVERE, "SEVERE ", 'E'},
                                        {9999, LogLevel::OFF, "OFF    ", 'O'},
                                        {55, static_cast<LogLevel::LogLevelValue>(55), "???    ", '?'},
                                        {-1, static_cast<LogLevel::LogLevelValue>(-1), "???    ", '?'}}};

TEST(LogLevel, EveryValueHasItsNameAndIndicator) {
  for (const LevelRow& row : kLevels) {
    const LogLevel level(row.level);
    EXPECT_EQ(row.value, level.getValue());
    EXPECT_EQ(row.name, level.toString());
    EXPECT_EQ(row.name, streamed(level));
    EXPECT_EQ(row.indicator, level.getIndicator()) << row.name;
  }
}

TEST(LogLevel, DefaultIsOff) { EXPECT_EQ(LogLevel(LogLevel::OFF), LogLevel()); }

TEST(LogLevel, ComparesTheSignedValues) {
  for (const LevelRow& left : kLevels) {
    for (const LevelRow& right : kLevels) {
      EXPECT_EQ(left.value == right.value, LogLevel(left.level) == LogLevel(right.level));
      EXPECT_EQ(left.value != right.value, LogLevel(left.level) != LogLevel(right.level));
      EXPECT_EQ(left.value >= right.value, LogLevel(left.level) >= LogLevel(right.level));
    }
  }
}

TEST(LogLevel, CopyAndAssignmentTakeTheValue) {
  const LogLevel severe(LogLevel::SEVERE);
  const LogLevel copy(severe);
  LogLevel assigned;
  assigned = severe;
  EXPECT_EQ(70, copy.getValue());
  EXPECT_EQ(70, assigned.getValue());
}

struct TraceRow {
  int value;
  TraceLevel::TraceLevelValue level;
  const char* name;
};

const std::array<TraceRow, 6> kTraceLevels{{{11, TraceLevel::VERBOSE, "VERBOSE "},
                                            {21, TraceLevel::MODERATE, "MODERATE"},
                                            {31, TraceLevel::FLOW, "FLOW    "},
                                            {9999, TraceLevel::OFF, "OFF     "},
                                            {0, static_cast<TraceLevel::TraceLevelValue>(0), "???     "},
                                            {-7, static_cast<TraceLevel::TraceLevelValue>(-7), "???     "}}};

TEST(TraceLevel, EveryValueHasItsName) {
  for (const TraceRow& row : kTraceLevels) {
    const TraceLevel level(row.level);
    EXPECT_EQ(row.value, level.getValue());
    EXPECT_EQ(row.name, level.toString());
    EXPECT_EQ(row.name, streamed(level));
  }
}

TEST(TraceLevel, DefaultIsOff) { EXPECT_EQ(TraceLevel(TraceLevel::OFF), TraceLevel()); }

TEST(TraceLevel, ComparesTheSignedValues) {
  for (const TraceRow& left : kTraceLevels) {
    for (const TraceRow& right : kTraceLevels) {
      EXPECT_EQ(left.value == right.value, TraceLevel(left.level) == TraceLevel(right.level));
      EXPECT_EQ(left.value != right.value, TraceLevel(left.level) != TraceLevel(right.level));
      EXPECT_EQ(left.value >= right.value, TraceLevel(left.level) >= TraceLevel(right.level));
    }
  }
}

TEST(TraceLevel, LiesOneAboveTheLogLevelItMapsTo) {
  EXPECT_EQ(LogLevel(LogLevel::FINEST).getValue() + 1, TraceLevel(TraceLevel::VERBOSE).getValue());
  EXPECT_EQ(LogLevel(LogLevel::FINER).getValue() + 1, TraceLevel(TraceLevel::MODERATE).getValue());
  EXPECT_EQ(LogLevel(LogLevel::FINE).getValue() + 1, TraceLevel(TraceLevel::FLOW).getValue());
}

TEST(TraceLevel, CopyAndAssignmentTakeTheValue) {
  const TraceLevel flow(TraceLevel::FLOW);
  const TraceLevel copy(flow);
  TraceLevel assigned;
  assigned = flow;
  EXPECT_EQ(31, copy.getValue());
  EXPECT_EQ(31, assigned.getValue());
}

struct TypeRow {
  int value;
  LogRecordType::LogRecordTypeValue type;
  const char* name;
  bool traceable;
};

const std::array<TypeRow, 7> kTypes{{{1, LogRecordType::ENTRY, "ENTRY   ", true},
                                     {2, LogRecordType::EXIT, "EXIT    ", true},
                                     {3, LogRecordType::DATA, "DATA    ", true},
                                     {4, LogRecordType::THROWING, "THROWING", true},
                                     {5, LogRecordType::EVENT, "EVENT   ", false},
                                     {0, static_cast<LogRecordType::LogRecordTypeValue>(0), "???     ", true},
                                     {6, static_cast<LogRecordType::LogRecordTypeValue>(6), "???     ", true}}};

TEST(LogRecordType, EveryValueHasItsNameAndAllButEventsAreTraceable) {
  for (const TypeRow& row : kTypes) {
    const LogRecordType type(row.type);
    EXPECT_EQ(row.value, type.getValue());
    EXPECT_EQ(row.name, type.toString());
    EXPECT_EQ(row.name, streamed(type));
    EXPECT_EQ(row.traceable, type.isTraceable()) << row.name;
  }
}

TEST(LogRecordType, DefaultIsEntry) { EXPECT_EQ(LogRecordType(LogRecordType::ENTRY), LogRecordType()); }

TEST(LogRecordType, ComparesTheValues) {
  for (const TypeRow& left : kTypes) {
    for (const TypeRow& right : kTypes) {
      EXPECT_EQ(left.value == right.value, LogRecordType(left.type) == LogRecordType(right.type));
      EXPECT_EQ(left.value != right.value, LogRecordType(left.type) != LogRecordType(right.type));
    }
  }
}

TEST(LogRecordType, CopyAndAssignmentTakeTheValue) {
  const LogRecordType event(LogRecordType::EVENT);
  const LogRecordType copy(event);
  LogRecordType assigned;
  assigned = event;
  EXPECT_EQ(5, copy.getValue());
  EXPECT_EQ(5, assigned.getValue());
}

struct EnvironmentRow {
  RASEnvironment::RASEnvironmentValue value;
  const char* name;
};

const std::array<EnvironmentRow, 7> kEnvironments{
    {{static_cast<RASEnvironment::RASEnvironmentValue>(1), "DAEMON           "},
     {static_cast<RASEnvironment::RASEnvironmentValue>(2), "DAEMON_FOREGROUND"},
     {static_cast<RASEnvironment::RASEnvironmentValue>(3), "???              "},
     {static_cast<RASEnvironment::RASEnvironmentValue>(4), "UNITTEST         "},
     {static_cast<RASEnvironment::RASEnvironmentValue>(5), "JAVA_APP         "},
     {static_cast<RASEnvironment::RASEnvironmentValue>(9999), "UNSPECIFIED      "},
     {static_cast<RASEnvironment::RASEnvironmentValue>(-1), "???              "}}};

TEST(RASEnvironment, EveryValueHasItsNameAndThreeHasNone) {
  for (const EnvironmentRow& row : kEnvironments) {
    EXPECT_EQ(row.name, RASEnvironment(row.value).toString());
    EXPECT_EQ(row.name, streamed(RASEnvironment(row.value)));
  }
}

TEST(RASEnvironment, NamesHaveTheirValues) {
  EXPECT_EQ(1, RASEnvironment::DAEMON);
  EXPECT_EQ(2, RASEnvironment::DAEMON_FOREGROUND);
  EXPECT_EQ(4, RASEnvironment::UNITTEST);
  EXPECT_EQ(5, RASEnvironment::JAVA_APP);
  EXPECT_EQ(9999, RASEnvironment::UNSPECIFIED);
}

TEST(RASEnvironment, DefaultIsUnspecified) { EXPECT_EQ(RASEnvironment(RASEnvironment::UNSPECIFIED), RASEnvironment()); }

TEST(RASEnvironment, ComparesCopiesAndAssignsTheValue) {
  const RASEnvironment daemon(RASEnvironment::DAEMON);
  const RASEnvironment copy(daemon);
  RASEnvironment assigned;
  EXPECT_TRUE(assigned != daemon);
  EXPECT_FALSE(assigned == daemon);
  assigned = daemon;
  EXPECT_TRUE(assigned == daemon);
  EXPECT_FALSE(copy != daemon);
}

}  // namespace
}  // namespace tessel
