#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include <tessel/LogLevel.h>
#include <tessel/Logger.h>
#include <tessel/NLS.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>

#include "support/Captures.h"
#include "support/FreshProcess.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"

namespace tessel {

struct RASTest {
  static void copy() { const RAS copy(RAS::getInstance()); }
  static void assign() { RAS::getInstance() = RAS::getInstance(); }
};

namespace {

using test::TraceScope;
using Texts = std::vector<std::string>;

// The least level that passes the logger.
int thresholdOf(const std::string& logger) {
  for (const auto level : {LogLevel::ALL, LogLevel::FINEST, LogLevel::FINER, LogLevel::FINE, LogLevel::CONFIG,
                           LogLevel::INFO, LogLevel::WARNING, LogLevel::SEVERE}) {
    if (Logger::getLogger(logger)->isLoggable(level)) return level;
  }
  return LogLevel::OFF;
}

bool isTraced(const std::string& logger) { return Logger::getLogger(logger)->isLoggable(LogLevel::FINE); }

TEST(RAS, TraceIsAvailableFromTheFirstSpecificationOn) {
  test::inFreshProcess([] {
    EXPECT_FALSE(RAS::isTraceAvailable());
    RAS::setDebugLevel(TraceLevel::FLOW);
    EXPECT_FALSE(RAS::isTraceAvailable());
    RAS::setLevel("");
    EXPECT_TRUE(RAS::isTraceAvailable());
    RAS::setLevel("=OFF");
    EXPECT_TRUE(RAS::isTraceAvailable());
  });
}

TEST(RAS, StartsUnspecifiedWithoutLogDirectoryAndPrefix) {
  EXPECT_EQ(RASEnvironment(RASEnvironment::UNSPECIFIED), RAS::getEnvironment());
  EXPECT_EQ("", RAS::getLogPath());
  EXPECT_EQ("", RAS::getTraceSpecNamePrefix());
}

TEST(RAS, NoDebugLevelIsOnAtFirst) {
  test::inFreshProcess([] {
    for (const auto level : {TraceLevel::FLOW, TraceLevel::MODERATE, TraceLevel::VERBOSE, TraceLevel::OFF}) {
      EXPECT_FALSE(RAS::isDebugOn(level)) << level;
    }
  });
}

struct DebugRow {
  TraceLevel::TraceLevelValue set;
  bool flow;
  bool moderate;
  bool verbose;
};

TEST(RAS, DebugIsOnAtAndAboveTheDebugLevel) {
  const TraceScope restored("");
  for (const DebugRow& row :
       {DebugRow{TraceLevel::VERBOSE, true, true, true}, DebugRow{TraceLevel::MODERATE, true, true, false},
        DebugRow{TraceLevel::FLOW, true, false, false}, DebugRow{TraceLevel::OFF, false, false, false}}) {
    RAS::setDebugLevel(row.set);
    EXPECT_EQ(row.flow, RAS::isDebugOn(TraceLevel::FLOW)) << row.set;
    EXPECT_EQ(row.moderate, RAS::isDebugOn(TraceLevel::MODERATE)) << row.set;
    EXPECT_EQ(row.verbose, RAS::isDebugOn(TraceLevel::VERBOSE)) << row.set;
    EXPECT_FALSE(RAS::isDebugOn(TraceLevel::OFF)) << row.set;
  }
}

struct WordRow {
  const char* word;
  int level;
};

TEST(RAS, LevelWords) {
  for (const WordRow& row :
       {WordRow{"OFF", 50}, WordRow{"INFO", 50}, WordRow{"CONFIG", 40}, WordRow{"WARNING", 60}, WordRow{"ERROR", 70},
        WordRow{"SEVERE", 70}, WordRow{"FATAL", 70}, WordRow{"ALL", 0}, WordRow{"VERBOSE", 10}, WordRow{"MODERATE", 20},
        WordRow{"FLOW", 30}, WordRow{"flow", 30}, WordRow{"Verbose", 10}, WordRow{"off", 50}, WordRow{"Off", 50},
        WordRow{"bogus", 50}, WordRow{"", 50}, WordRow{"FLOW ", 50}, WordRow{"A=ALL", 50}}) {
    const TraceScope trace("words=ALL:words=" + std::string(row.word));
    EXPECT_EQ(row.level, thresholdOf("words")) << row.word;
  }
}

TEST(RAS, SpecificationSetsTheLevelsOfItsNames) {
  const TraceScope trace("spec.a=FLOW::spec.b,,spec.c=VERBOSE:");
  EXPECT_EQ(30, thresholdOf("spec.a"));
  EXPECT_EQ(10, thresholdOf("spec.b"));
  EXPECT_EQ(10, thresholdOf("spec.c"));
}

TEST(RAS, BareNamesMeanFullTrace) {
  const TraceScope trace("bare.a,bare.b");
  EXPECT_EQ(0, thresholdOf("bare.a"));
  EXPECT_EQ(0, thresholdOf("bare.b"));
}

TEST(RAS, LevelWithoutNameMeansEveryClass) {
  Logger::getLogger("every.single.one");
  const TraceScope trace("=ALL");
  EXPECT_EQ(0, thresholdOf(""));
  EXPECT_EQ(0, thresholdOf("every.single.one"));
}

TEST(RAS, LevelPassesDownToDescendants) {
  Logger::getLogger("down.b.c");
  const TraceScope trace("down=MODERATE");
  EXPECT_EQ(20, thresholdOf("down.b.c"));
}

TEST(RAS, PlusAddsToWhatIsInForce) {
  const TraceScope trace("plus.a=FLOW");
  RAS::setLevel("+plus.c=VERBOSE");
  EXPECT_EQ(30, thresholdOf("plus.a"));
  EXPECT_EQ(10, thresholdOf("plus.c"));
}

TEST(RAS, SpecificationWithoutPlusDiscardsTheFormerOne) {
  const TraceScope trace("minus.a=FLOW");
  RAS::setLevel("minus.c=VERBOSE");
  EXPECT_FALSE(isTraced("minus.a"));
  EXPECT_EQ(10, thresholdOf("minus.c"));
}

TEST(RAS, EmptySpecificationDiscardsAllTraceLoggers) {
  for (const char* specification : {"", ":", ":::"}) {
    const TraceScope trace("empty.a=FLOW:=MODERATE");
    ASSERT_TRUE(isTraced("empty.a"));
    RAS::setLevel(specification);
    EXPECT_FALSE(isTraced("empty.a")) << specification;
    EXPECT_FALSE(isTraced("")) << specification;
  }
}

TEST(RAS, LonePlusKeepsEverything) {
  const TraceScope trace("lone.a=FLOW");
  RAS::setLevel("+");
  EXPECT_TRUE(isTraced("lone.a"));
}

TEST(RAS, SeparatorsAloneNameNothing) {
  for (const char* specification : {",", ",,,", ":,:", "+", "+:", "+,", "+:,:", ",=FLOW", ",,=FLOW:"}) {
    const TraceScope trace("only.a=FLOW");
    RAS::setLevel(specification);
    EXPECT_EQ(specification[0] == '+', isTraced("only.a")) << specification;
    EXPECT_FALSE(isTraced("")) << specification;
  }
}

TEST(RAS, EmptyLevelWordCountsAsInfo) {
  const TraceScope trace("word.a=ALL:word.b=ALL");
  RAS::setLevel("+word.a=:word.b");
  EXPECT_EQ(50, thresholdOf("word.a"));
  RAS::setLevel("=ALL");
  RAS::setLevel("+=");
  EXPECT_EQ(50, thresholdOf(""));
}

TEST(RAS, EverythingBehindTheFirstEqualsSignIsTheLevelWord) {
  const TraceScope trace("twice.a=FLOW=ALL");
  EXPECT_EQ(50, thresholdOf("twice.a"));
}

// The sign is looked for behind the first character of an entry.
TEST(RAS, EntryOfTwoEqualsSignsNamesTheLoggerOfThatName) {
  const TraceScope trace("==FLOW");
  EXPECT_FALSE(isTraced(""));
  EXPECT_EQ(30, thresholdOf("="));
}

TEST(RAS, PlusCountsAtTheFrontOnly) {
  const TraceScope trace("front.a=FLOW:+front.b=FLOW");
  EXPECT_FALSE(isTraced("front.b"));
  EXPECT_TRUE(isTraced("+front.b"));
}

TEST(RAS, BlanksBelongToNames) {
  const TraceScope trace(" blank.a = FLOW");
  EXPECT_FALSE(isTraced("blank.a"));
  EXPECT_EQ(50, thresholdOf(" blank.a "));
}

TEST(RAS, NamesMayHoldBytesAbove127AndZero) {
  const std::string name = "high.\xE9\xFF\x80";
  const std::string zero = std::string("zero.") + '\0' + "b";
  const TraceScope trace(name + "=FLOW:" + zero + "=FLOW:word.high=\xE9");
  EXPECT_EQ(30, thresholdOf(name));
  EXPECT_EQ(30, thresholdOf(zero));
  EXPECT_FALSE(isTraced("zero."));
  EXPECT_EQ(50, thresholdOf("word.high"));
}

TEST(RAS, TenThousandEntriesAllHoldAndAreAllDiscarded) {
  constexpr int kEntries = 10000;
  const auto name = [](int i) { return "many.entry" + std::to_string(i); };
  std::string specification;
  for (int i = 0; i < kEntries; ++i) specification += name(i) + (i % 2 == 0 ? "=FLOW:" : "=VERBOSE:");
  const TraceScope trace(specification);
  for (int i = 0; i < kEntries; ++i) ASSERT_EQ(i % 2 == 0 ? 30 : 10, thresholdOf(name(i))) << i;
  RAS::setLevel("");
  for (int i = 0; i < kEntries; ++i) ASSERT_FALSE(isTraced(name(i))) << i;
}

TEST(RAS, SpecificationOfAMegabyteIsReadLikeAnyOther) {
  constexpr std::size_t kMegabyte = 1 << 20;
  const std::string longName(kMegabyte, 'n');
  {
    const TraceScope trace(longName + "=FLOW:mega.a=FLOW");
    EXPECT_TRUE(isTraced(longName));
    EXPECT_TRUE(isTraced("mega.a"));
  }
  const TraceScope trace(std::string(kMegabyte, ':') + "mega.b=FLOW");
  EXPECT_TRUE(isTraced("mega.b"));
  RAS::setLevel("mega.c=" + std::string(kMegabyte, 'A'));
  EXPECT_EQ(50, thresholdOf("mega.c"));
}

TEST(RAS, SwitchingOffKeepsEvents) {
  const TraceScope trace("");
  RAS::setLevel("off.a=OFF");
  EXPECT_EQ(50, thresholdOf("off.a"));
}

TEST(RAS, ReportsEveryChangeAsAnEvent) {
  const test::RecordingHandler events("RAS");
  const TraceScope trace("reported=FLOW");
  ASSERT_EQ(1U, events.records().size());
  const test::Recorded event = events.records().front();
  const RasDescriptor rd("RAS", "com.kelvo.tessel.nativ.common.KTBNVMessages");
  EXPECT_EQ(NLS::format(rd, "KTBNV0018_TRACE_CHANGE", "reported=FLOW"), event.message);
  EXPECT_EQ(50, event.level.getValue());
  EXPECT_EQ(5, event.type.getValue());
  EXPECT_EQ("RAS", event.className);
}

TEST(RAS, TracesTheNamesThatGetFullTrace) {
  const TraceScope trace("RAS=MODERATE");
  const test::RecordingHandler recorded("RAS");
  RAS::setLevel("+full.a");
  bool found = false;
  for (const test::Recorded& record : recorded.records()) {
    if (record.message.find(" data [addLogger for key: full.a]") == std::string::npos) continue;
    found = true;
    EXPECT_EQ(LogLevel::FINER, record.level.getValue()) << "the level of MODERATE trace";
  }
  EXPECT_TRUE(found);
}

TEST(RAS, CopyAndAssignmentAreCaptured) {
  const test::Captures captures;
  RASTest::copy();
  RASTest::assign();
  EXPECT_EQ((Texts{"class NYXException: RAS copy constructor should never be called!",
                   "class NYXException: RAS assignment operator should never be called!"}),
            captures.values("Cause:"));
  EXPECT_EQ((Texts{"FFDC_001", "FFDC_002"}), captures.values("Probe:"));
}

}  // namespace
}  // namespace tessel
