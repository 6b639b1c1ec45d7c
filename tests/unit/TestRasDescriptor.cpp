#include <gtest/gtest.h>

#include <array>

#include <tessel/Logger.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>

#include "support/FreshProcess.h"
#include "support/TraceScope.h"

namespace tessel {
namespace {

TEST(RasDescriptor, NamesLoggerAfterTheClass) {
  const RasDescriptor rd("descriptor.Both", "x.Messages");
  EXPECT_EQ("descriptor.Both", rd.getClassName());
  EXPECT_EQ("x.Messages", rd.getMessageBundle());
  EXPECT_EQ(Logger::getLogger("descriptor.Both"), rd.getLogger());
  EXPECT_FALSE(rd.isDebug());
}

TEST(RasDescriptor, WithoutBundleHasAnEmptyBundle) {
  const RasDescriptor rd("descriptor.NoBundle");
  EXPECT_EQ("", rd.getMessageBundle());
  EXPECT_EQ(Logger::getLogger("descriptor.NoBundle"), rd.getLogger());
}

TEST(RasDescriptor, KeepsTheGivenLogger) {
  Logger* logger = Logger::getLogger("descriptor.Other");
  const RasDescriptor three("descriptor.Mine", "x.Messages", logger);
  const RasDescriptor two("descriptor.Mine", logger);
  EXPECT_EQ(logger, three.getLogger());
  EXPECT_EQ("x.Messages", three.getMessageBundle());
  EXPECT_EQ(logger, two.getLogger());
  EXPECT_EQ("", two.getMessageBundle());
  EXPECT_EQ("descriptor.Mine", two.getClassName());
}

TEST(RasDescriptor, NullLoggerMakesADebugDescriptor) {
  EXPECT_TRUE(RasDescriptor("descriptor.Debug", nullptr).isDebug());
  EXPECT_TRUE(RasDescriptor("descriptor.Debug", "x.Messages", nullptr).isDebug());
}

TEST(RasDescriptor, DefaultIsAnEmptyDebugDescriptor) {
  const RasDescriptor rd;
  EXPECT_EQ("", rd.getClassName());
  EXPECT_EQ("", rd.getMessageBundle());
  EXPECT_EQ(nullptr, rd.getLogger());
  EXPECT_TRUE(rd.isDebug());
}

TEST(RasDescriptor, CopyAndAssignmentTakeEverything) {
  const RasDescriptor source("descriptor.Source", "x.Messages");
  const RasDescriptor copy(source);
  RasDescriptor assigned;
  assigned = source;
  for (const RasDescriptor* rd : {&copy, static_cast<const RasDescriptor*>(&assigned)}) {
    EXPECT_EQ("descriptor.Source", rd->getClassName());
    EXPECT_EQ("x.Messages", rd->getMessageBundle());
    EXPECT_EQ(source.getLogger(), rd->getLogger());
  }
}

TEST(RasDescriptor, DebugDescriptorAsksTheDebugLevelOnly) {
  test::inFreshProcess([] {
    const RasDescriptor rd("descriptor.Debug", nullptr);
    EXPECT_FALSE(rd.isOn(TraceLevel::FLOW));
    RAS::setDebugLevel(TraceLevel::MODERATE);
    ASSERT_FALSE(RAS::isTraceAvailable());
    EXPECT_TRUE(rd.isFlowOn());
    EXPECT_TRUE(rd.isOn(TraceLevel::FLOW));
    EXPECT_TRUE(rd.isOn(TraceLevel::MODERATE));
    EXPECT_FALSE(rd.isOn(TraceLevel::VERBOSE));
    EXPECT_FALSE(rd.isOn(TraceLevel::OFF));
  });
}

TEST(RasDescriptor, DebugDescriptorStaysOffWhenTraceIsAvailable) {
  const test::TraceScope trace("=ALL");
  EXPECT_FALSE(RasDescriptor("descriptor.Debug", nullptr).isOn(TraceLevel::FLOW));
}

TEST(RasDescriptor, IsOffUntilTraceIsAvailable) {
  test::inFreshProcess([] {
    const RasDescriptor rd("descriptor.Early");
    rd.getLogger()->setLevel(LogLevel::ALL);
    EXPECT_FALSE(rd.isFlowOn());
    // The debug level opens the switch, but not for a descriptor with a logger.
    RAS::setDebugLevel(TraceLevel::VERBOSE);
    EXPECT_FALSE(rd.isFlowOn());
    RAS::setLevel("");
    EXPECT_TRUE(rd.isFlowOn());
  });
}

struct Row {
  LogLevel::LogLevelValue logger;
  bool flow;
  bool moderate;
  bool verbose;
};

TEST(RasDescriptor, TraceLevelsMapToTheLevelsBelowThem) {
  const test::TraceScope trace("");
  const RasDescriptor rd("descriptor.Levels");
  for (const Row& row : {Row{LogLevel::ALL, true, true, true}, Row{LogLevel::FINEST, true, true, true},
                         Row{LogLevel::FINER, true, true, false}, Row{LogLevel::FINE, true, false, false},
                         Row{LogLevel::CONFIG, false, false, false}, Row{LogLevel::INFO, false, false, false},
                         Row{LogLevel::OFF, false, false, false}}) {
    rd.getLogger()->setLevel(row.logger);
    EXPECT_EQ(row.flow, rd.isFlowOn()) << row.logger;
    EXPECT_EQ(row.flow, rd.isOn(TraceLevel::FLOW)) << row.logger;
    EXPECT_EQ(row.moderate, rd.isOn(TraceLevel::MODERATE)) << row.logger;
    EXPECT_EQ(row.verbose, rd.isOn(TraceLevel::VERBOSE)) << row.logger;
  }
}

TEST(RasDescriptor, OtherTraceLevelsAreNeverOn) {
  const test::TraceScope trace("");
  const RasDescriptor rd("descriptor.OtherLevels");
  rd.getLogger()->setLevel(LogLevel::ALL);
  EXPECT_FALSE(rd.isOn(TraceLevel::OFF));
  EXPECT_FALSE(rd.isOn(static_cast<TraceLevel::TraceLevelValue>(30)));
}

}  // namespace
}  // namespace tessel
