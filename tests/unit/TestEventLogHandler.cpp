#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <tessel/EventLogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/NYXThread.h>
#include <tessel/NYXUtils.h>

#include "support/CapturedOutput.h"
#include "support/Captures.h"
#include "support/Files.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"

namespace tessel {
namespace {

using test::CapturedOutput;
using test::linesOf;
using Texts = std::vector<std::string>;

// What stands behind the prefix of a printed event.
std::string behindPrefix(const std::string& line) {
  const std::string prefix = test::shownElement("KTBNV_EVENT_LOG_PREFIX") + ' ';
  return line.rfind(prefix, 0) == 0 ? line.substr(prefix.size()) : "no prefix: " + line;
}

LogFileProperties propertiesIn(const std::filesystem::path& folder, int limit = 1 << 20, int count = 3) {
  return {(folder / "event%g.log").string(), limit, count, true, false};
}

void log(EventLogHandler& handler, const std::string& text, const LogLevel& level = LogLevel::INFO) {
  LogRecord record(level, LogRecordType::EVENT, text);
  record.setSourceMethodName("none");
  record.setSourceClassName("Class1");
  record.setThreadId(NYXThread::getCurrentThreadId());
  handler.publish(record);
}

Texts linesIn(const std::filesystem::path& file) { return test::windowsLines(test::bytesOf(file)); }

// What an event line says behind its time and thread.
std::string sayingOf(const std::string& line) {
  static const std::regex layout(R"(\[\d\d/\d\d/\d{4} \d\d:\d\d:\d\d\.\d{3} [^\]]+\]  [0-9a-f]{16} (.*))");
  std::smatch match;
  return std::regex_match(line, match, layout) ? match[1].str() : "no event line: " + line;
}

TEST(EventLogHandler, FileBeginsWithTheBannerAndAnEmptyLine) {
  const test::TempFolder folder;
  LogFileProperties properties = propertiesIn(folder.path());
  properties.addApplicationProperty("b", "2");
  properties.addApplicationProperty("a", "1");
  const EventLogHandler handler(properties);
  const Texts lines = linesIn(folder.path() / "event0.log");
  ASSERT_EQ(7U, lines.size());
  EXPECT_EQ(test::shownElement("KTBNV_START_LOG_BANNER1"), lines[0]);
  const std::string title = test::shownElement("KTBNV_BUILD_LEVEL", "");
  EXPECT_EQ(title, lines[1].substr(0, title.size()));
  EXPECT_TRUE(std::regex_match(lines[1].substr(title.size()), std::regex(R"(\d+\.\d+\.\d+-[0-9a-z]+)"))) << lines[1];
  EXPECT_EQ(test::shownElement("KTBNV_PROPERTIES"), lines[2]);
  EXPECT_EQ("a=1", lines[3]);
  EXPECT_EQ("b=2", lines[4]);
  EXPECT_EQ(test::shownElement("KTBNV_START_LOG_BANNER2"), lines[5]);
  EXPECT_EQ("", lines[6]);
}

TEST(EventLogHandler, WritesEachEventAsALineOfFixedColumns) {
  const test::TempFolder folder;
  EventLogHandler handler(propertiesIn(folder.path()));
  log(handler, "text", LogLevel::WARNING);
  const std::string line = linesIn(folder.path() / "event0.log").at(5);
  EXPECT_EQ("Class1        W text", sayingOf(line));
  EXPECT_NE(std::string::npos, line.find("]  " + [] {
    std::ostringstream id;
    id << std::hex << NYXThread::getCurrentThreadId();
    return std::string(16 - id.str().size(), '0') + id.str();
  }()));
}

TEST(EventLogHandler, WritesFromConfigUp) {
  const test::TempFolder folder;
  EventLogHandler handler(propertiesIn(folder.path()));
  EXPECT_EQ(40, handler.getLogLevel().getValue());
  for (const auto level : {LogLevel::FINEST, LogLevel::FINE, LogLevel::CONFIG, LogLevel::INFO, LogLevel::SEVERE}) {
    log(handler, "text", level);
  }
  const Texts lines = linesIn(folder.path() / "event0.log");
  ASSERT_EQ(8U, lines.size());
  EXPECT_EQ("Class1        C text", sayingOf(lines[5]));
  EXPECT_EQ("Class1        I text", sayingOf(lines[6]));
  EXPECT_EQ("Class1        E text", sayingOf(lines[7]));
}

TEST(EventLogHandler, RotatedFileHasNoBanner) {
  const test::TempFolder folder;
  EventLogHandler handler(propertiesIn(folder.path(), 1));
  log(handler, "one");
  log(handler, "two");
  EXPECT_EQ("Class1        I two", sayingOf(linesIn(folder.path() / "event0.log").at(0)));
  EXPECT_EQ("Class1        I one", sayingOf(linesIn(folder.path() / "event1.log").at(0)));
  EXPECT_EQ(test::shownElement("KTBNV_START_LOG_BANNER1"), linesIn(folder.path() / "event2.log").at(0));
}

TEST(EventLogHandler, ContinuedFileGetsAnotherBanner) {
  const test::TempFolder folder;
  { EventLogHandler first(propertiesIn(folder.path())); }
  EventLogHandler second(propertiesIn(folder.path()));
  log(second, "text");
  const Texts lines = linesIn(folder.path() / "event0.log");
  ASSERT_EQ(11U, lines.size());
  EXPECT_EQ(lines[0], lines[5]);
}

TEST(EventLogHandler, EscapesInTextsBecomeCharacters) {
  const test::TempFolder folder;
  EventLogHandler handler(propertiesIn(folder.path()));
  log(handler, "caf\\u00E9");
  EXPECT_EQ("Class1        I caf\xC3\xA9", sayingOf(linesIn(folder.path() / "event0.log").at(5)));
}

TEST(EventLogHandler, WithoutDirectoryTheReasonIsPrintedOnceAndEveryEventBehindThePrefix) {
  const test::TempFolder folder;
  const std::filesystem::path blocked = folder.write("file", "") / "sub";
  CapturedOutput error(CapturedOutput::error);
  EventLogHandler handler(propertiesIn(blocked));
  log(handler, "one");
  log(handler, "two", LogLevel::CONFIG);
  log(handler, "fine", LogLevel::FINE);
  const Texts lines = linesOf(error.text());
  ASSERT_EQ(3U, lines.size());
  const std::string parent = NYXUtils::getParent(propertiesIn(blocked).getPattern());
  const std::string start = test::shownMessage("KTBNV0126_UNABLE_TO_CREATE_EVENT_LOG", parent, "KTBNV0051E: ");
  EXPECT_EQ(start, lines[0].substr(0, start.size()));
  EXPECT_EQ("Class1        I one", sayingOf(behindPrefix(lines[1])));
  EXPECT_EQ("Class1        C two", sayingOf(behindPrefix(lines[2])));
}

TEST(EventLogHandler, EscapesInAPrintedEventBecomeCharacters) {
  const test::TempFolder folder;
  CapturedOutput error(CapturedOutput::error);
  EventLogHandler handler(propertiesIn(folder.write("file", "") / "sub"));
  log(handler, "caf\\u00E9");
  EXPECT_EQ("Class1        I caf\xC3\xA9", sayingOf(behindPrefix(linesOf(error.text()).at(1))));
}

// A folder in the place of the oldest generation makes every rotation fail.
TEST(EventLogHandler, FailuresToWriteAreReportedOnceAndEveryEventIsPrinted) {
  const test::TempFolder folder;
  EventLogHandler handler(propertiesIn(folder.path(), 1, 2));
  folder.write("event1.log/file", "");
  CapturedOutput error(CapturedOutput::error);
  log(handler, "one");
  log(handler, "two");
  const Texts lines = linesOf(error.text());
  ASSERT_EQ(3U, lines.size());
  const std::string start =
      test::shownMessage("KTBNV0052_UNABLE_TO_WRITE_TO_EVENT_LOG", folder.path().string(), "KTBNV0056E: ");
  EXPECT_EQ(start, lines[0].substr(0, start.size()));
  EXPECT_EQ("Class1        I one", sayingOf(behindPrefix(lines[1])));
  EXPECT_EQ("Class1        I two", sayingOf(behindPrefix(lines[2])));
}

TEST(EventLogHandler, NextEventTriesTheFileAgainAfterAFailure) {
  const test::TempFolder folder;
  EventLogHandler handler(propertiesIn(folder.path(), 1, 2));
  folder.write("event1.log/file", "");
  {
    CapturedOutput error(CapturedOutput::error);
    log(handler, "failed");
  }
  std::filesystem::remove_all(folder.path() / "event1.log");
  CapturedOutput error(CapturedOutput::error);
  log(handler, "written");
  EXPECT_EQ("", error.text());
  EXPECT_EQ("Class1        I written", sayingOf(linesIn(folder.path() / "event0.log").at(0)));
}

TEST(EventLogHandler, EventsOfSeveralThreadsStayWhole) {
  constexpr int kThreads = 8;
  constexpr int kEvents = 100;
  const test::TempFolder folder;
  {
    EventLogHandler handler(propertiesIn(folder.path()));
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&handler] {
        for (int n = 0; n < kEvents; ++n) log(handler, "text of an event");
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  Texts lines = linesIn(folder.path() / "event0.log");
  lines.erase(lines.begin(), lines.begin() + 5);
  EXPECT_EQ(static_cast<std::size_t>(kThreads * kEvents), lines.size());
  for (const std::string& line : lines) EXPECT_EQ("Class1        I text of an event", sayingOf(line));
}

TEST(EventLogHandler, ReleasesItsFileAndItsLock) {
  const test::TempFolder folder;
  { const EventLogHandler handler(propertiesIn(folder.path())); }
  EXPECT_EQ(Texts{"event0.log"}, test::namesIn(folder.path()));
}

}  // namespace
}  // namespace tessel
