#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include <tessel/EventLog.h>
#include <tessel/Logger.h>
#include <tessel/NYXThread.h>
#include <tessel/RasDescriptor.h>

#include "support/CapturedOutput.h"
#include "support/Captures.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"

namespace tessel {
namespace {

using test::CapturedOutput;
using test::Recorded;
using Texts = std::vector<std::string>;

void logAll(const RasDescriptor& rd) {
  EventLog::configNoFormat(rd, "config");
  EventLog::infoNoFormat(rd, "info");
  EventLog::warningNoFormat(rd, "warning");
  EventLog::errorNoFormat(rd, "error");
}

TEST(EventLog, EachOperationHasItsLevel) {
  const RasDescriptor rd("event.Levels");
  rd.getLogger()->setLevel(LogLevel::CONFIG);
  const test::RecordingHandler handler("event.Levels");
  logAll(rd);
  EXPECT_EQ((Texts{"config", "info", "warning", "error"}), handler.messages());
  std::vector<int> levels;
  for (const Recorded& record : handler.records()) levels.push_back(record.level.getValue());
  EXPECT_EQ((std::vector<int>{40, 50, 60, 70}), levels);
}

TEST(EventLog, RecordNamesClassAndThreadButNoMethodOrObject) {
  const RasDescriptor rd("event.Record");
  const test::RecordingHandler handler("event.Record");
  EventLog::infoNoFormat(rd, "text");
  ASSERT_EQ(1U, handler.records().size());
  const Recorded record = handler.records().front();
  EXPECT_EQ(5, record.type.getValue());
  EXPECT_EQ("event.Record", record.className);
  EXPECT_EQ("none", record.methodName);
  EXPECT_EQ(nullptr, record.object);
  EXPECT_EQ(NYXThread::getCurrentThreadId(), record.threadId);
  EXPECT_EQ(" event.Record  I text", record.line.substr(record.line.size() - 21));
}

TEST(EventLog, LoggerDropsEventsBelowItsLevel) {
  const RasDescriptor rd("event.Threshold");
  const test::RecordingHandler handler("event.Threshold");
  logAll(rd);
  EXPECT_EQ((Texts{"info", "warning", "error"}), handler.messages());
}

TEST(EventLog, TextIsTakenAsItIs) {
  const RasDescriptor rd("event.Raw");
  const test::RecordingHandler handler("event.Raw");
  EventLog::infoNoFormat(rd, "{0} ''%s'' \n");
  EXPECT_EQ(Texts{"{0} ''%s'' \n"}, handler.messages());
}

TEST(EventLog, EarlyEventsGoToStandardErrorFromWarningUp) {
  const RasDescriptor rd("event.Early");
  rd.getLogger()->setLevel(LogLevel::ALL);
  CapturedOutput output(CapturedOutput::output);
  CapturedOutput error(CapturedOutput::error);
  logAll(rd);
  EXPECT_EQ("", output.text());
  const Texts lines = test::linesOf(error.text());
  ASSERT_EQ(2U, lines.size());
  EXPECT_EQ('[', lines[0].front());
  EXPECT_EQ(" event.Early   W warning", lines[0].substr(lines[0].size() - 24));
  EXPECT_EQ(" event.Early   E error", lines[1].substr(lines[1].size() - 22));
}

TEST(EventLog, DescriptorWithoutLoggerWritesToStandardOutput) {
  CapturedOutput output(CapturedOutput::output);
  CapturedOutput error(CapturedOutput::error);
  logAll(RasDescriptor("Debug", nullptr));
  EXPECT_EQ("", error.text());
  const Texts lines = test::linesOf(output.text());
  ASSERT_EQ(4U, lines.size());
  const Texts endings{" Debug         C config", " Debug         I info", " Debug         W warning",
                      " Debug         E error"};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ("DEBUG: [", lines[i].substr(0, 8));
    EXPECT_EQ(endings[i], lines[i].substr(lines[i].size() - endings[i].size()));
  }
}

TEST(EventLog, TracesTheTextWhenTraceIsModerate) {
  const RasDescriptor rd("event.Traced");
  const test::RecordingHandler handler("event.Traced");
  const test::TraceScope trace("event.Traced=MODERATE");
  EventLog::infoNoFormat(rd, "text");
  EXPECT_EQ((Texts{"text", "  d  log data [text]"}), handler.messages());
}

TEST(EventLog, TracesNothingWhenTraceIsFlow) {
  const RasDescriptor rd("event.Flow");
  const test::RecordingHandler handler("event.Flow");
  const test::TraceScope trace("event.Flow=FLOW");
  EventLog::infoNoFormat(rd, "text");
  EXPECT_EQ(Texts{"text"}, handler.messages());
}

TEST(EventLog, CopyAndAssignmentAreCaptured) {
  const test::Captures captures;
  // There is no object to copy from, and the copy reads none.
  alignas(EventLog) std::array<unsigned char, sizeof(EventLog)> memory{};
  EventLog copy(*reinterpret_cast<const EventLog*>(memory.data()));
  const EventLog& same = copy;
  copy = same;
  EXPECT_EQ((Texts{"class NYXException: EventLog copy constructor should never be called!",
                   "class NYXException: EventLog assignment operator should never be called!"}),
            captures.values("Cause:"));
  EXPECT_EQ((Texts{"EventLog", "EventLog"}), captures.values("Class:"));
  EXPECT_EQ((Texts{"FFDC_001", "FFDC_002"}), captures.values("Probe:"));
}

}  // namespace
}  // namespace tessel
