// One line of a trace file.
#include "trace/TraceLine.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "host/TraceLines.h"

namespace tessel::host {
namespace {

using tesselctl::trace::parseRecord;
using tesselctl::trace::RecordKind;
using tesselctl::trace::startsRecord;
using tesselctl::trace::TraceRecord;

// The record that holds the message. The line outlives it.
TraceRecord withMessage(const std::string& message) {
  static std::string line;
  line = traceLine(message);
  return parseRecord(line).value();
}

void expectMessage(const std::string& message, RecordKind kind, std::uint32_t depth, const std::string& method,
                   const std::string& text) {
  const TraceRecord record = withMessage(message);
  EXPECT_EQ(record.kind, kind) << message;
  EXPECT_EQ(record.depth, depth) << message;
  EXPECT_EQ(record.method, method) << message;
  EXPECT_EQ(record.text, text) << message;
}

}  // namespace

TEST(TraceLine, ColumnsBecomeTheFieldsOfTheRecord) {
  const std::string line = traceLine("  {  connect [q1]", "14:03:07.001.A3", "0000000000000108",
                                     "com.kelvo.tessel.IPCClientImpl", "@000000000064f0b0");
  const TraceRecord record = parseRecord(line).value();
  EXPECT_EQ(record.time, "14:03:07.001.A3");
  EXPECT_EQ(record.second, 50587U);
  EXPECT_EQ(record.number, 0x1A3U);
  EXPECT_EQ(record.thread, 0x108U);
  EXPECT_EQ(record.object, 0x64f0b0U);
  EXPECT_EQ(record.className, "com.kelvo.tessel.IPCClientImpl");
  EXPECT_FALSE(record.withoutEntry);
}

TEST(TraceLine, AStaticMethodHasNoObject) { EXPECT_EQ(withMessage("  {  m ").object, 0U); }

TEST(TraceLine, ACounterOfMoreThanThreeDigitsMovesTheColumns) {
  const std::string line = traceLine("  {  m ", "23:59:60.16777215.FF");
  const TraceRecord record = parseRecord(line).value();
  EXPECT_EQ(record.number, 4294967295U);
  EXPECT_EQ(record.method, "m");
}

TEST(TraceLine, AClassNameMayFillItsColumn) {
  const std::string name(70, 'c');
  const std::string line = traceLine("  {  m ", "00:00:00.000.00", "0000000000000001", name);
  EXPECT_EQ(parseRecord(line).value().className, name);
}

TEST(TraceLine, EntriesHaveArguments) {
  expectMessage("  {  connect [q1]", RecordKind::entry, 1, "connect", "[q1]");
  expectMessage("-- {  connect [a] [b c]", RecordKind::other, 0, "", "-- {  connect [a] [b c]");
  expectMessage("--  {  connect [a] [b c]", RecordKind::entry, 3, "connect", "[a] [b c]");
  expectMessage("  {  connect ", RecordKind::entry, 1, "connect", "");
  expectMessage("  {  operator () ", RecordKind::entry, 1, "operator ()", "");
}

TEST(TraceLine, ExitsHaveAReturnedValue) {
  expectMessage("  }  connect", RecordKind::exit, 1, "connect", "");
  expectMessage("----+  }  read returns [a] returns [b] std::string", RecordKind::exit, 6, "read",
                "returns [a] returns [b] std::string");
}

TEST(TraceLine, PointsHaveAText) {
  expectMessage("-  d  connect data [a] [b]", RecordKind::data, 2, "connect", "[a] [b]");
  expectMessage("-  d  connect data ", RecordKind::data, 2, "connect", "");
  expectMessage("-  !  connect, no pipe, sorry[tessel::NYXException]", RecordKind::throwing, 2, "connect",
                "no pipe, sorry[tessel::NYXException]");
}

TEST(TraceLine, TheRemarkOfAnExitIsNotPartOfItsName) {
  expectMessage("*** Missing Trace::Exit c ***   }  a", RecordKind::exit, 1, "a", "");
  EXPECT_FALSE(withMessage("*** Missing Trace::Exit c ***   }  a").withoutEntry);
  expectMessage("*** Missing Trace::Entry b *** -  }  b returns [1] int", RecordKind::exit, 2, "b", "returns [1] int");
  EXPECT_TRUE(withMessage("*** Missing Trace::Entry b *** -  }  b").withoutEntry);
}

TEST(TraceLine, IndentationIsMarkedAtEveryFifth) {
  EXPECT_EQ(withMessage("----+----+  {  m ").depth, 11U);
  for (const char* message : {"-----  {  m ", "+  {  m ", "----+----  {", "---"}) {
    EXPECT_EQ(withMessage(message).kind, RecordKind::other) << message;
  }
}

TEST(TraceLine, AMessageThatIsNoTracePointIsKeptWhole) {
  for (const char* message : {"", "text", " {  null ", "  x  m", "  {  ", "  {", "*** Missing Trace::Exit c",
                              "*** Missing Trace::Entry c ***", "*** Missing Trace::Entry c *** text"}) {
    expectMessage(message, RecordKind::other, 0, "", message);
    EXPECT_FALSE(withMessage(message).withoutEntry);
  }
}

TEST(TraceLine, AnEmptyTextPointsBehindTheLine) {
  const std::string line = traceLine("  }  connect");
  EXPECT_EQ(parseRecord(line).value().text.data(), line.data() + line.size());
}

TEST(TraceLine, EveryShorterLineIsRefusedUpToTheMessage) {
  const std::string line = traceLine("");
  ASSERT_EQ(line.size(), 123U);
  for (std::size_t length = 0; length < line.size(); ++length) {
    EXPECT_FALSE(parseRecord(line.substr(0, length))) << length;
  }
  EXPECT_TRUE(parseRecord(line));
}

TEST(TraceLine, ADamagedColumnIsRefused) {
  for (const char* time :
       {"24:00:00.000.00", "00:60:00.000.00", "00:00:61.000.00", "00:00:00.00.00", "0:00:00.000.00", "00-00:00.000.00",
        "00:00-00.000.00", "00:00:00:000.00", "00:00:00.000:00", "00:00:00.000.0G", "00:00:00.000000000.00"}) {
    EXPECT_FALSE(parseRecord(traceLine("  {  m ", time))) << time;
  }
  for (const char* thread : {"000000000000010g", "0000000100000000", "000000000000108", "00000000000000108"}) {
    EXPECT_FALSE(parseRecord(traceLine("  {  m ", "00:00:00.000.00", thread))) << thread;
  }
  for (const char* object : {"            static", "          static", "@00000000000000", "#0000000000000000", ""}) {
    EXPECT_FALSE(parseRecord(traceLine("  {  m ", "00:00:00.000.00", "0000000000000001", "c", object))) << object;
  }
  const std::string tooLong = traceLine("  {  m ", "00:00:00.000.00", "0000000000000001", std::string(71, 'c'));
  EXPECT_TRUE(parseRecord(tooLong));
  std::string noBlank = traceLine("  {  m ");
  noBlank[122] = 'x';
  EXPECT_FALSE(parseRecord(noBlank));
}

TEST(TraceLine, ALineStartsARecordWithItsTimeStamp) {
  for (const char* line : {"14:03:07.000.00  ", "14:03:07.000.", "99:99:99.12345678.zz"}) {
    EXPECT_TRUE(startsRecord(line)) << line;
  }
  for (const char* line : {"", "14:03:07.000", "14:03:07", " 14:03:07.000.00", "14:03:07,000.00", "14:03:07.00.00",
                           "14:03:07.123456789.00", "[25/12/2022 14:03:07.000 CET]", "text"}) {
    EXPECT_FALSE(startsRecord(line)) << line;
  }
}

}  // namespace tessel::host
