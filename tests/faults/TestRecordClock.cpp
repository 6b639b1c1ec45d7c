// Where the times and the numbers of log records come from.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <tessel/LogRecord.h>

#include "support/ImportHook.h"

namespace tessel::test {
namespace {

using Times = std::vector<std::int64_t>;

// Lets the clock and its ticks stand where the test puts them, long after every real one.
class RecordClock : public testing::Test {
 protected:
  RecordClock() {
    tickHook_.replaceWith([this] { return tick; });
    timeHook_.replaceWith([this](FILETIME* time) {
      constexpr std::int64_t kSecond = 10'000'000;
      constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;
      const auto steps = static_cast<std::uint64_t>((second + kSecondsTo1970) * kSecond);
      *time = {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
      ++questions;
    });
    const LogRecord settled(LogLevel::INFO, LogRecordType::EVENT, "");  // of another tick and another second
    tick += 16;
    ++second;
    questions = 0;
  }

  // The second of a new record, and its number within that second.
  Times next() {
    const LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "");
    const std::string stamp = record.getTimestamp();
    return {record.getLogTime(), std::stoi(stamp.substr(9, 3)) * 256 + std::stoi(stamp.substr(13), nullptr, 16)};
  }

  std::int64_t second = 3'999'999'999;
  ULONGLONG tick = ULONGLONG{1} << 60;
  int questions = 0;

 private:
  ImportHook<"GetTickCount64", decltype(GetTickCount64)> tickHook_;
  ImportHook<"GetSystemTimePreciseAsFileTime", decltype(GetSystemTimePreciseAsFileTime)> timeHook_;
};

TEST_F(RecordClock, IsAskedOnceForEachTick) {
  EXPECT_EQ(next(), (Times{4'000'000'000, 0}));
  EXPECT_EQ(next(), (Times{4'000'000'000, 1}));
  EXPECT_EQ(questions, 1);
  tick += 16;
  EXPECT_EQ(next(), (Times{4'000'000'000, 2}));
  EXPECT_EQ(next(), (Times{4'000'000'000, 3}));
  EXPECT_EQ(questions, 2);
}

TEST_F(RecordClock, ShowsANewSecondWithTheNextTick) {
  EXPECT_EQ(next(), (Times{4'000'000'000, 0}));
  ++second;
  EXPECT_EQ(next(), (Times{4'000'000'000, 1}));
  tick += 16;
  EXPECT_EQ(next(), (Times{4'000'000'001, 0}));
  EXPECT_EQ(next(), (Times{4'000'000'001, 1}));
}

TEST_F(RecordClock, ThatWasSetBackIsFollowed) {
  EXPECT_EQ(next(), (Times{4'000'000'000, 0}));
  tick += 16;
  second -= 3600;
  EXPECT_EQ(next(), (Times{3'999'996'400, 0}));
  EXPECT_EQ(next(), (Times{3'999'996'400, 1}));
}

}  // namespace
}  // namespace tessel::test
