#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <tessel/Logger.h>
#include <tessel/NYXUtils.h>
#include <tessel/RasDescriptor.h>
#include <tessel/TraceEntryLogRecord.h>
#include <tessel/TraceFileLogHandler.h>

#include "support/Files.h"
#include "support/RecordingHandler.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"

namespace tessel {
namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t kBannerLines = 9;

LogFileProperties propertiesIn(const std::filesystem::path& folder, int limit = 1 << 20, int count = 3) {
  return {(folder / "trace%g.log").string(), limit, count, true, false};
}

void traceEntry(TraceFileLogHandler& handler, const std::string& method, const void* object = nullptr) {
  TraceEntryLogRecord record(LogLevel::FINE, "  { ");
  record.setSourceMethodName(method);
  record.setSourceClassName("p.Class1");
  record.setObjectReference(object);
  record.setThreadId(0x1A2B);
  handler.publish(record);
}

void event(TraceFileLogHandler& handler, const std::string& text) {
  LogRecord record(LogLevel::INFO, LogRecordType::EVENT, text);
  handler.publish(record);
}

Texts linesIn(const std::filesystem::path& file) { return test::windowsLines(test::bytesOf(file)); }

std::string padded(std::string text, std::size_t width) {
  text.resize(width, ' ');
  return text;
}

TEST(TraceFileLogHandler, MakesNoFileBeforeTheFirstRecord) {
  const test::TempFolder folder;
  TraceFileLogHandler handler(propertiesIn(folder.path()));
  EXPECT_EQ(Texts(), test::namesIn(folder.path()));
  traceEntry(handler, "method1");
  EXPECT_EQ((Texts{"trace0.log", "trace0.log.lck"}), test::namesIn(folder.path()));
}

TEST(TraceFileLogHandler, WritesFromFinestUp) {
  const test::TempFolder folder;
  const TraceFileLogHandler handler(propertiesIn(folder.path()));
  EXPECT_EQ(10, handler.getLogLevel().getValue());
}

TEST(TraceFileLogHandler, BannerStandsAtTheTop) {
  const test::TempFolder folder;
  LogFileProperties properties = propertiesIn(folder.path());
  properties.addApplicationProperty("b", "2");
  properties.addApplicationProperty("a", "1");
  TraceFileLogHandler handler(properties);
  event(handler, "opens the file");
  const Texts lines = linesIn(folder.path() / "trace0.log");
  ASSERT_EQ(kBannerLines + 2, lines.size());
  const std::regex date(R"((Sun|Mon|Tue|Wed|Thu|Fri|Sat) [A-Z][a-z][a-z] [ 123]\d \d\d:\d\d:\d\d \d{4})");
  const std::string dateTitle = test::shownElement("KTBNV_DATE", "");
  EXPECT_EQ(dateTitle, lines[0].substr(0, dateTitle.size()));
  EXPECT_TRUE(std::regex_match(lines[0].substr(dateTitle.size()), date)) << lines[0];
  EXPECT_EQ("", lines[1]);
  const std::string processTitle = test::shownElement("KTBNV_PROCESS_ID", "");
  EXPECT_EQ(processTitle, lines[2].substr(0, processTitle.size()));
  EXPECT_TRUE(std::regex_match(lines[2].substr(processTitle.size()), std::regex("[0-9]+"))) << lines[2];
  EXPECT_EQ("", lines[3]);
  EXPECT_TRUE(std::regex_match(lines[4], std::regex(R"(BUILD_LEVEL \d+\.\d+\.\d+-[0-9a-z]+)"))) << lines[4];
  EXPECT_EQ("PROPERTIES", lines[5]);
  EXPECT_EQ("a=1", lines[6]);
  EXPECT_EQ("b=2", lines[7]);
  EXPECT_EQ("", lines[8]);
  EXPECT_EQ(padded("TimeStamp", 17) + padded("TID", 17) + padded("ObjectId", 18) + padded("Class", 71) + "Data",
            lines[9]);
  EXPECT_EQ(std::string(166, '='), lines[10]);
}

TEST(TraceFileLogHandler, BannerShowsTheLocalTimeInTheLayoutOfTheCLibrary) {
  const test::TempFolder folder;
  const std::time_t before = std::time(nullptr);
  TraceFileLogHandler handler(propertiesIn(folder.path()));
  const std::time_t after = std::time(nullptr) + 1;  // the C library's clock may lag by a tick
  event(handler, "opens the file");
  const std::string shown = linesIn(folder.path() / "trace0.log").at(0) + "\n";
  bool found = false;
  for (std::time_t second = before; second <= after; ++second) {
    found = found || shown == test::shownElement("KTBNV_DATE", std::asctime(std::localtime(&second)));
  }
  EXPECT_TRUE(found) << shown;
}

TEST(TraceFileLogHandler, EachRecordIsALineOfFixedColumns) {
  const test::TempFolder folder;
  TraceFileLogHandler handler(propertiesIn(folder.path()));
  const int object = 0;
  traceEntry(handler, "method1", &object);
  traceEntry(handler, "method2");
  const Texts lines = linesIn(folder.path() / "trace0.log");
  ASSERT_EQ(kBannerLines + 2, lines.size());
  std::array<char, 32> address{};
  std::snprintf(address.data(), address.size(), "@%016llx",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&object)));
  const std::string start = lines[kBannerLines].substr(0, 15);
  EXPECT_TRUE(std::regex_match(start, std::regex(R"(\d\d:\d\d:\d\d\.\d{3}\.[0-9A-F]{2})"))) << start;
  EXPECT_EQ("  0000000000001a2b " + std::string(address.data()) + " " + padded("p.Class1", 70) + "   {  method1 ",
            lines[kBannerLines].substr(15));
  EXPECT_EQ("  0000000000001a2b            static " + padded("p.Class1", 70) + "   {  method2 ",
            lines[kBannerLines + 1].substr(15));
}

TEST(TraceFileLogHandler, EventsAreNotWritten) {
  const test::TempFolder folder;
  TraceFileLogHandler handler(propertiesIn(folder.path()));
  traceEntry(handler, "method1");
  event(handler, "an event");
  EXPECT_EQ(kBannerLines + 1, linesIn(folder.path() / "trace0.log").size());
}

TEST(TraceFileLogHandler, RotatedFileHasNoBanner) {
  const test::TempFolder folder;
  TraceFileLogHandler handler(propertiesIn(folder.path(), 1));
  traceEntry(handler, "method1");
  traceEntry(handler, "method2");
  EXPECT_EQ(1U, linesIn(folder.path() / "trace0.log").size());
  EXPECT_EQ(1U, linesIn(folder.path() / "trace1.log").size());
  EXPECT_EQ(kBannerLines, linesIn(folder.path() / "trace2.log").size());
}

TEST(TraceFileLogHandler, UnusableDirectoryIsReportedExactlyOnce) {
  const test::TempFolder folder;
  const std::filesystem::path blocked = folder.write("file", "") / "sub";
  const test::RecordingHandler events("TraceFileLogHandler");
  TraceFileLogHandler handler(propertiesIn(blocked));
  for (int i = 0; i < 10; ++i) traceEntry(handler, "method1");
  ASSERT_EQ(1U, events.records().size());
  const test::Recorded report = events.records().front();
  const std::string start = test::messageText("KTBNV0127_UNABLE_TO_CREATE_TRACE",
                                              NYXUtils::getParent(propertiesIn(blocked).getPattern()), "KTBNV0051E: ");
  EXPECT_EQ(start, report.message.substr(0, start.size()));
  EXPECT_EQ(70, report.level.getValue());
  EXPECT_EQ(5, report.type.getValue());
  EXPECT_EQ("TraceFileLogHandler", report.className);
}

// The report is a record of its own that reaches the handler again.
TEST(TraceFileLogHandler, ReportThatComesBackToTheHandlerIsHarmless) {
  const test::TempFolder folder;
  const std::filesystem::path blocked = folder.write("file", "") / "sub";
  Logger& logger = *Logger::getLogger("TraceFileLogHandler");
  TraceFileLogHandler handler(propertiesIn(blocked));
  const test::RecordingHandler events("TraceFileLogHandler");
  logger.addHandler(handler);
  traceEntry(handler, "method1");
  logger.removeHandler(handler);
  EXPECT_EQ(1U, events.records().size());
}

// Whoever hears of the failure may wait for a thread that traces.
TEST(TraceFileLogHandler, ReportIsMadeWhileOtherThreadsCanTrace) {
  class Tracing : public LogHandler {
   public:
    explicit Tracing(TraceFileLogHandler& handler) : LogHandler(LogLevel::ALL), handler_(handler) {}
    void publish(LogRecord& /*record*/) override {
      std::thread([this] { traceEntry(handler_, "method1"); }).join();
      ++reports;
    }
    int reports = 0;

   private:
    TraceFileLogHandler& handler_;
  };
  const test::TempFolder folder;
  const std::filesystem::path blocked = folder.write("file", "") / "sub";
  Logger& logger = *Logger::getLogger("TraceFileLogHandler");
  TraceFileLogHandler handler(propertiesIn(blocked));
  Tracing tracing(handler);
  logger.addHandler(tracing);
  traceEntry(handler, "method1");
  logger.removeHandler(tracing);
  EXPECT_EQ(1, tracing.reports);
}

TEST(TraceFileLogHandler, FileThatCouldNotBeOpenedIsNotTriedAgain) {
  const test::TempFolder folder;
  const std::filesystem::path blocked = folder.write("file", "") / "sub";
  const test::RecordingHandler events("TraceFileLogHandler");
  TraceFileLogHandler handler(propertiesIn(blocked));
  traceEntry(handler, "method1");
  std::filesystem::remove(folder.path() / "file");
  traceEntry(handler, "method2");
  EXPECT_EQ(Texts(), test::namesIn(folder.path()));
  EXPECT_EQ(1U, events.records().size());
}

TEST(TraceFileLogHandler, FailureToWriteIsReportedOnceAndEveryRecordTriesAgain) {
  const test::TempFolder folder;
  const test::RecordingHandler events("TraceFileLogHandler");
  TraceFileLogHandler handler(propertiesIn(folder.path(), 1, 2));
  folder.write("trace1.log/file", "");
  traceEntry(handler, "method1");
  traceEntry(handler, "method2");
  ASSERT_EQ(1U, events.records().size());
  const std::string start =
      test::messageText("KTBNV0053_UNABLE_TO_WRITE_TO_TRACE", folder.path().string(), "KTBNV0056E: ");
  EXPECT_EQ(start, events.messages().front().substr(0, start.size()));
  std::filesystem::remove_all(folder.path() / "trace1.log");
  traceEntry(handler, "method3");
  const Texts lines = linesIn(folder.path() / "trace0.log");
  ASSERT_EQ(1U, lines.size());
  EXPECT_NE(std::string::npos, lines[0].find("method3"));
  EXPECT_EQ(1U, events.records().size());
}

TEST(TraceFileLogHandler, RecordsOfSeveralThreadsStayWhole) {
  constexpr int kThreads = 8;
  constexpr int kRecords = 100;
  const test::TempFolder folder;
  {
    TraceFileLogHandler handler(propertiesIn(folder.path()));
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&handler] {
        for (int n = 0; n < kRecords; ++n) traceEntry(handler, "method1");
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  const Texts lines = linesIn(folder.path() / "trace0.log");
  ASSERT_EQ(kBannerLines + kThreads * kRecords, lines.size());
  for (std::size_t i = kBannerLines; i < lines.size(); ++i) EXPECT_EQ("   {  method1 ", lines[i].substr(122)) << i;
}

}  // namespace
}  // namespace tessel
