#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <tessel/ConsoleLogHandler.h>
#include <tessel/LogRecord.h>

#include "support/CapturedOutput.h"
#include "support/Captures.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"

namespace tessel {
namespace {

using test::CapturedOutput;

struct Written {
  std::string output;
  std::string error;
};

Written publish(const LogLevel& level) {
  CapturedOutput output(CapturedOutput::output);
  CapturedOutput error(CapturedOutput::error);
  ConsoleLogHandler handler;
  LogRecord record(level, LogRecordType::EVENT, "the text");
  record.setSourceClassName("Class");
  handler.publish(record);
  return {output.text(), error.text()};
}

void expectWritten(const LogLevel& level, const std::string& output, const std::string& error) {
  const Written written = publish(level);
  EXPECT_EQ(output, written.output) << level;
  EXPECT_EQ(error, written.error) << level;
}

TEST(ConsoleLogHandler, WritesOnlyTheTextFromConfigUp) {
  expectWritten(LogLevel::CONFIG, "the text\n", "");
  expectWritten(LogLevel::INFO, "the text\n", "");
}

TEST(ConsoleLogHandler, WritesToStandardErrorFromWarningUp) {
  expectWritten(LogLevel::WARNING, "", "the text\n");
  expectWritten(LogLevel::SEVERE, "", "the text\n");
}

TEST(ConsoleLogHandler, EscapesInTextsBecomeCharacters) {
  CapturedOutput output(CapturedOutput::output);
  ConsoleLogHandler handler;
  LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "caf\\u00E9");
  handler.publish(record);
  EXPECT_EQ("caf\xC3\xA9\n", output.text());
}

TEST(ConsoleLogHandler, WritesNothingBelowConfig) {
  expectWritten(LogLevel::FINE, "", "");
  expectWritten(LogLevel::ALL, "", "");
}

TEST(ConsoleLogHandler, ShowsItsLevel) {
  const ConsoleLogHandler handler;
  std::ostringstream text;
  text << handler;
  EXPECT_EQ("Level: CONFIG ", text.str());
  EXPECT_EQ(40, handler.getLogLevel().getValue());
}

TEST(ConsoleLogHandler, LinesOfSeveralThreadsDoNotMix) {
  constexpr int kThreads = 4;
  constexpr int kLines = 100;
  CapturedOutput output(CapturedOutput::output);
  ConsoleLogHandler handler;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&handler, text = std::string(100, static_cast<char>('a' + i))] {
      for (int n = 0; n < kLines; ++n) {
        LogRecord record(LogLevel::INFO, LogRecordType::EVENT, text);
        handler.publish(record);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::vector<std::string> lines = test::linesOf(output.text());
  EXPECT_EQ(static_cast<std::size_t>(kThreads * kLines), lines.size());
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(kLines, std::count(lines.begin(), lines.end(), std::string(100, static_cast<char>('a' + i))));
  }
}

TEST(ConsoleLogHandler, TracesItsOwnPublication) {
  const test::TraceScope trace("ConsoleLogHandler=FLOW");
  const test::RecordingHandler recorded("ConsoleLogHandler");
  CapturedOutput output(CapturedOutput::output);
  ConsoleLogHandler handler;
  LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "the text");
  std::ostringstream line;
  line << record;
  handler.publish(record);
  EXPECT_EQ("the text\n", output.text());
  const std::vector<test::Recorded> points = recorded.records();
  ASSERT_EQ(2U, points.size());
  EXPECT_EQ("  {  publish [" + line.str() + "]", points[0].message);
  EXPECT_EQ("  }  publish", points[1].message);
  EXPECT_EQ(&handler, points[0].object);
  EXPECT_EQ(".ConsoleLogHandler", points[0].className);
}

TEST(ConsoleLogHandler, ReportsNothingOfItsOwnWhenItPublishesATraceRecord) {
  const test::TraceScope trace("ConsoleLogHandler=FLOW");
  ConsoleLogHandler handler;
  const test::RecordingHandler recorded("ConsoleLogHandler");
  Logger* logger = Logger::getLogger("ConsoleLogHandler");
  logger->addHandler(handler);
  LogRecord record(LogLevel::FINE, LogRecordType::DATA, "below the handler's level");
  ConsoleLogHandler outer;
  outer.publish(record);
  logger->removeHandler(handler);
  EXPECT_EQ(2U, recorded.records().size());
}

}  // namespace
}  // namespace tessel
