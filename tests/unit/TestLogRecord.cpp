#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <tessel/IPCTimeoutException.h>
#include <tessel/LogRecord.h>
#include <tessel/TraceDataLogRecord.h>
#include <tessel/TraceEntryLogRecord.h>
#include <tessel/TraceExitLogRecord.h>
#include <tessel/TraceThrowingLogRecord.h>

#include "support/Captures.h"

namespace tessel {

struct LogRecordTest {
  static void assign(LogRecord& target, const LogRecord& source) { target = source; }
};

namespace {

template <class Value>
std::string streamed(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

std::string hex16(unsigned long long number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%016llx", number);
  return text.data();
}

std::string addressOf(const void* object) { return hex16(reinterpret_cast<std::uintptr_t>(object)); }

// The counter part of a record's time stamp.
std::string ending(const LogRecord& record) { return record.getTimestamp().substr(8); }

// That many records of one second, the first of them being the second's first.
std::vector<LogRecord> recordsOfOneSecond(std::size_t count) {
  for (;;) {
    const std::time_t now = std::time(nullptr);
    while (std::time(nullptr) == now) std::this_thread::yield();
    std::vector<LogRecord> records;
    while (records.size() < count) records.emplace_back(LogLevel::FINE, LogRecordType::DATA, "m");
    // The first of them may still show the second before.
    const std::int64_t second = records.front().getLogTime();
    if (second > now && second == records.back().getLogTime()) return records;
  }
}

LogRecord recordOf(const LogRecordType& type, const std::string& className) {
  LogRecord record(LogLevel::WARNING, type, "the message");
  record.setSourceClassName(className);
  record.setThreadId(0x1a2b);
  return record;
}

TEST(LogRecord, CountsTheRecordsOfASecond) {
  const std::vector<LogRecord> records = recordsOfOneSecond(2);
  EXPECT_EQ(".000.00", ending(records[0]));
  EXPECT_EQ(".000.01", ending(records[1]));
}

TEST(LogRecord, RecordNumber256OfASecondCarriesIntoTheFirstField) {
  const std::vector<LogRecord> records = recordsOfOneSecond(0x1A4);
  EXPECT_EQ(".000.FF", ending(records[255]));
  EXPECT_EQ(".001.00", ending(records[256]));
  EXPECT_EQ(".001.A3", ending(records[0x1A3]));
}

TEST(LogRecord, EverySecondStartsAtZeroAgain) {
  const std::vector<LogRecord> first = recordsOfOneSecond(3);
  const std::vector<LogRecord> next = recordsOfOneSecond(1);
  EXPECT_LT(first[2].getLogTime(), next[0].getLogTime());
  EXPECT_EQ(".000.02", ending(first[2]));
  EXPECT_EQ(".000.00", ending(next[0]));
}

TEST(LogRecord, NoTwoThreadsGetTheSameNumber) {
  constexpr std::size_t kThreads = 8;
  constexpr std::size_t kRecords = 500;
  std::vector<std::vector<std::pair<std::int64_t, std::string>>> made(kThreads);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&stamps = made[i]] {
      for (std::size_t n = 0; n < kRecords; ++n) {
        const LogRecord record(LogLevel::FINE, LogRecordType::DATA, "m");
        stamps.emplace_back(record.getLogTime(), ending(record));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::pair<std::int64_t, std::string>> all;
  for (const auto& stamps : made) all.insert(stamps.begin(), stamps.end());
  EXPECT_EQ(kThreads * kRecords, all.size());
}

TEST(LogRecord, TimestampIsLocalTimeAndCounter) {
  const LogRecord record = recordsOfOneSecond(1).front();
  const std::time_t time = record.getLogTime();
  std::array<char, 32> expected{};
  std::strftime(expected.data(), expected.size(), "%H:%M:%S.000.00", std::localtime(&time));
  EXPECT_EQ(expected.data(), record.getTimestamp());
  EXPECT_EQ(15U, record.getTimestamp().size());
}

TEST(LogRecord, DateTimestampIsDayFirstWithZone) {
  const LogRecord record = recordsOfOneSecond(257).back();
  const std::time_t time = record.getLogTime();
  std::array<char, 128> expected{};
  std::strftime(expected.data(), expected.size(), "%d/%m/%Y %H:%M:%S.001 ", std::localtime(&time));
  std::array<char, 64> zone{};
  const bool named = std::strftime(zone.data(), zone.size(), "%Z", std::localtime(&time)) != 0;
  EXPECT_EQ(std::string(expected.data()) + (named ? zone.data() : "???"), record.getDateTimestamp());
}

TEST(LogRecord, TakesTheTimeOfItsConstruction) {
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // steps of the coarse clock since the record before
  const std::int64_t before = std::time(nullptr);
  const LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "m");
  EXPECT_LE(before, record.getLogTime());
  EXPECT_GE(std::time(nullptr) + 1, record.getLogTime());  // the C library's clock may lag by a tick
}

TEST(LogRecord, HeaderOfATraceFile) {
  const std::string header = LogRecord::getLogRecordOutputHeader();
  EXPECT_EQ("TimeStamp" + std::string(8, ' ') + "TID" + std::string(14, ' ') + "ObjectId" + std::string(10, ' ') +
                "Class" + std::string(66, ' ') + "Data\n" + std::string(166, '='),
            header);
  EXPECT_EQ(17U, header.find("TID"));
  EXPECT_EQ(34U, header.find("ObjectId"));
  EXPECT_EQ(52U, header.find("Class"));
  EXPECT_EQ(123U, header.find("Data"));
}

TEST(LogRecord, TraceLineStandsUnderItsHeader) {
  LogRecord record = recordOf(LogRecordType::DATA, "com.Example");
  record.setObjectReference(&record);
  const std::string line = streamed(record);
  EXPECT_EQ(record.getTimestamp() + "  ", line.substr(0, 17));
  EXPECT_EQ("0000000000001a2b ", line.substr(17, 17));
  EXPECT_EQ("@" + addressOf(&record) + " ", line.substr(34, 18));
  EXPECT_EQ("com.Example" + std::string(59, ' ') + " ", line.substr(52, 71));
  EXPECT_EQ("the message", line.substr(123));
}

TEST(LogRecord, EventLineIsBracketed) {
  const LogRecord record = recordOf(LogRecordType::EVENT, "Class");
  EXPECT_EQ("[" + record.getDateTimestamp() + "]  0000000000001a2b Class         W the message", streamed(record));
}

TEST(LogRecord, RecordOfAnUnknownTypeIsATraceLine) {
  const LogRecord record = recordOf(static_cast<LogRecordType::LogRecordTypeValue>(77), "Class");
  EXPECT_EQ("the message", streamed(record).substr(123));
}

TEST(LogRecord, NullObjectShowsStatic) {
  const LogRecord record = recordOf(LogRecordType::ENTRY, "Class");
  EXPECT_EQ("           static ", streamed(record).substr(34, 18));
}

TEST(LogRecord, LongClassNameIsCut) {
  const std::string name = std::string(13, 'a') + std::string(57, 'b');
  EXPECT_EQ(name + " the message", streamed(recordOf(LogRecordType::EXIT, name)).substr(52));
  EXPECT_EQ(name + " the message", streamed(recordOf(LogRecordType::EXIT, name + "c")).substr(52));
  const LogRecord event = recordOf(LogRecordType::EVENT, name);
  EXPECT_EQ("[" + event.getDateTimestamp() + "]  0000000000001a2b aaaaaaaaaaaaa W the message", streamed(event));
}

TEST(LogRecord, EmptyClassNameIsPadded) {
  EXPECT_EQ(std::string(70, ' ') + " the message", streamed(recordOf(LogRecordType::EXIT, "")).substr(52));
  const LogRecord event = recordOf(LogRecordType::EVENT, "");
  EXPECT_EQ("]  0000000000001a2b " + std::string(13, ' ') + " W the message",
            streamed(event).substr(event.getDateTimestamp().size() + 1));
}

TEST(LogRecord, NewRecordHasNothingButWhatItWasGiven) {
  const LogRecord record(LogLevel::CONFIG, LogRecordType::EVENT, "m");
  EXPECT_EQ(40, record.getLogLevel().getValue());
  EXPECT_EQ(5, record.getType().getValue());
  EXPECT_EQ("m", record.getMessage());
  EXPECT_EQ("", record.getSourceClassName());
  EXPECT_EQ("", record.getSourceMethodName());
  EXPECT_EQ(nullptr, record.getObjectReference());
  EXPECT_EQ(0U, record.getThreadId());
  EXPECT_EQ(0U, record.getNumArguments());
  EXPECT_EQ("", record.getMethodReturnType());
  EXPECT_EQ(nullptr, record.getThrown());
}

TEST(LogRecord, ArgumentAtOrPastTheCountIsEmpty) {
  LogRecord record(LogLevel::FINE, LogRecordType::ENTRY, "m");
  std::array<std::string, 3> arguments{"a", "b", "c"};
  record.setArguments(3, arguments.data());
  record.setArguments(2, arguments.data());
  EXPECT_EQ(2U, record.getNumArguments());
  EXPECT_EQ("b", record.getArgument(1));
  EXPECT_EQ("", record.getArgument(2));
  EXPECT_EQ("", record.getArgument(3));
}

TEST(LogRecord, StoresAtMostFiveArguments) {
  LogRecord record(LogLevel::FINE, LogRecordType::ENTRY, "m");
  std::array<std::string, 7> arguments{"a", "b", "c", "d", "e", "f", "g"};
  record.setArguments(7, arguments.data());
  EXPECT_EQ(7U, record.getNumArguments());
  EXPECT_EQ("e", record.getArgument(4));
  EXPECT_EQ("", record.getArgument(5));
  EXPECT_EQ("", record.getArgument(6));
}

TEST(LogRecord, SettingAFieldToItselfChangesNothing) {
  LogRecord record = recordOf(LogRecordType::EXIT, "Class");
  record.setSourceMethodName("method");
  record.setMethodReturnType("int");
  record.setSourceClassName(record.getSourceClassName());
  record.setSourceMethodName(record.getSourceMethodName());
  record.setMethodReturnType(record.getMethodReturnType());
  EXPECT_EQ("Class", record.getSourceClassName());
  EXPECT_EQ("method", record.getSourceMethodName());
  EXPECT_EQ("int", record.getMethodReturnType());
}

TEST(LogRecord, CopyShowsTheSameLine) {
  LogRecord record = recordOf(LogRecordType::DATA, "Class");
  record.setObjectReference(&record);
  const LogRecord copy(record);
  EXPECT_EQ(streamed(record), streamed(copy));
}

TEST(LogRecord, AssignmentIsCapturedAndChangesNothing) {
  const test::Captures captures;
  LogRecord target = recordOf(LogRecordType::DATA, "Target");
  const std::string before = streamed(target);
  LogRecordTest::assign(target, recordOf(LogRecordType::EVENT, "Source"));
  EXPECT_EQ(before, streamed(target));
  EXPECT_EQ(std::vector<std::string>{"LogRecord"}, captures.values("Class:"));
  EXPECT_EQ(std::vector<std::string>{"operator="}, captures.values("Method:"));
  EXPECT_EQ(std::vector<std::string>{"class NYXException: not supported!"}, captures.values("Cause:"));
}

template <class Record>
Record traceRecord(std::vector<std::string> arguments) {
  Record record(LogLevel::FINE, "base");
  record.setSourceMethodName("method");
  record.setArguments(static_cast<unsigned>(arguments.size()), arguments.data());
  return record;
}

TEST(LogRecord, TraceRecordsHaveTheirTypes) {
  EXPECT_EQ(1, TraceEntryLogRecord(LogLevel::FINE, "").getType().getValue());
  EXPECT_EQ(2, TraceExitLogRecord(LogLevel::FINE, "").getType().getValue());
  EXPECT_EQ(3, TraceDataLogRecord(LogLevel::FINER, "").getType().getValue());
  EXPECT_EQ(4, TraceThrowingLogRecord(LogLevel::FINE, "").getType().getValue());
  EXPECT_EQ(20, TraceDataLogRecord(LogLevel::FINER, "").getLogLevel().getValue());
}

TEST(LogRecord, EntryShowsItsArguments) {
  EXPECT_EQ("base method ", traceRecord<TraceEntryLogRecord>({}).getMessage());
  EXPECT_EQ("base method [a]", traceRecord<TraceEntryLogRecord>({"a"}).getMessage());
  EXPECT_EQ("base method [a] [] [c]", traceRecord<TraceEntryLogRecord>({"a", "", "c"}).getMessage());
}

TEST(LogRecord, DataShowsItsArguments) {
  EXPECT_EQ("base method data ", traceRecord<TraceDataLogRecord>({}).getMessage());
  EXPECT_EQ("base method data [a] [b]", traceRecord<TraceDataLogRecord>({"a", "b"}).getMessage());
}

TEST(LogRecord, ExitShowsWhatItReturns) {
  auto record = traceRecord<TraceExitLogRecord>({"7"});
  record.setMethodReturnType("int");
  EXPECT_EQ("base method returns [7] int", record.getMessage());
}

TEST(LogRecord, ExitWithoutArgumentShowsNoReturn) {
  auto record = traceRecord<TraceExitLogRecord>({});
  record.setMethodReturnType("int");
  EXPECT_EQ("base method", record.getMessage());
}

TEST(LogRecord, ThrowingShowsTheExceptionAndItsClass) {
  const IPCTimeoutException late("late");
  auto record = traceRecord<TraceThrowingLogRecord>({});
  record.setThrown(&late);
  EXPECT_EQ(&late, record.getThrown());
  EXPECT_EQ("base method, class IPCTimeoutException: late[class IPCTimeoutException]", record.getMessage());
}

TEST(LogRecord, ThrowingWithoutExceptionSaysSo) {
  EXPECT_EQ("base method, Unknown Throwable[Throwable]", traceRecord<TraceThrowingLogRecord>({}).getMessage());
}

TEST(LogRecord, StreamUsesTheTextOfTheTraceRecord) {
  const auto record = traceRecord<TraceEntryLogRecord>({"a"});
  const LogRecord& base = record;
  EXPECT_EQ("base method [a]", streamed(base).substr(123));
}

}  // namespace
}  // namespace tessel
