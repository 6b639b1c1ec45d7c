#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <tessel/FFDC.h>
#include <tessel/IPCException.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThread.h>
#include <tessel/RasDescriptor.h>

#include "support/CapturedOutput.h"
#include "support/Captures.h"

namespace tessel {

struct FFDCTest {
  template <class... Values>
  static void capture(const void* object, const Values*... values) {
    FFDC::internalCapture("Class1", object, "method1", "FFDC_042", nullptr, static_cast<int>(sizeof...(values)),
                          values...);
  }
};

namespace {

using test::CapturedOutput;
using test::Captures;
using Texts = std::vector<std::string>;

std::string padded(const char* format, unsigned long long number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), format, number);
  return text.data();
}

void expectMatch(const std::string& pattern, const std::string& text) {
  EXPECT_TRUE(std::regex_match(text, std::regex(pattern))) << text;
}

TEST(FFDC, RecordHasALineForEachFact) {
  const Captures captures;
  const IPCException cause("broken");
  FFDC::capture("Class1", "method1", FFDC::PROBE_007(), &cause);
  ASSERT_EQ(1U, captures.records().size());
  const Texts lines = captures.records().front();
  ASSERT_EQ(9U, lines.size());
  expectMatch("Level:      \\S+", lines[0]);
  expectMatch("Time:       \\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d GMT", lines[1]);
  expectMatch("Process ID: \\d+", lines[2]);
  EXPECT_EQ("Thread ID:  " + padded("0x%016llx", NYXThread::getCurrentThreadId()), lines[3]);
  EXPECT_EQ("Class:      Class1", lines[4]);
  EXPECT_EQ("Method:     method1", lines[5]);
  EXPECT_EQ("Probe:      FFDC_007", lines[6]);
  EXPECT_EQ("Cause:      class IPCException: broken", lines[7]);
  EXPECT_EQ("[EOF]", lines[8]);
}

TEST(FFDC, TimeIsDayFirstAndUniversal) {
  const Captures captures;
  const std::time_t before = std::time(nullptr);
  FFDC::capture("Class1", "method1", "probe", nullptr);
  const std::time_t after = std::time(nullptr) + 1;  // the C library's clock may lag by a tick
  Texts allowed;
  for (std::time_t second = before; second <= after; ++second) {
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%d/%m/%Y %H:%M:%S GMT", std::gmtime(&second));
    allowed.emplace_back(text.data());
  }
  const std::string shown = captures.values("Time:").at(0);
  EXPECT_NE(allowed.end(), std::find(allowed.begin(), allowed.end(), shown)) << shown;
}

TEST(FFDC, DescriptorNamesTheClass) {
  const Captures captures;
  FFDC::capture(RasDescriptor("Described", nullptr), "method1", "probe", nullptr);
  EXPECT_EQ(Texts{"Described"}, captures.values("Class:"));
}

TEST(FFDC, NullCauseShowsNull) {
  const Captures captures;
  FFDC::capture("Class1", "method1", "probe", nullptr);
  EXPECT_EQ(Texts{"null"}, captures.values("Cause:"));
}

TEST(FFDC, CauseShowsItsWholeChain) {
  const Captures captures;
  const IPCException root("root");
  const NYXException cause("top", &root);
  FFDC::capture("Class1", "method1", "probe", &cause);
  EXPECT_EQ(Texts{cause.toString()}, captures.values("Cause:"));
}

TEST(FFDC, ObjectIsShownAsInstanceBehindTheClass) {
  const Captures captures;
  const int object = 0;
  FFDCTest::capture(&object);
  const Texts lines = captures.records().at(0);
  ASSERT_EQ(10U, lines.size());
  EXPECT_EQ("Class:      Class1", lines[4]);
  EXPECT_EQ("Instance:   " + padded("0x%016llx", reinterpret_cast<std::uintptr_t>(&object)), lines[5]);
  EXPECT_EQ("Method:     method1", lines[6]);
}

TEST(FFDC, NullObjectHasNoInstanceLine) {
  const Captures captures;
  FFDCTest::capture(nullptr);
  const Texts lines = captures.records().at(0);
  EXPECT_EQ(9U, lines.size());
  for (const std::string& line : lines) EXPECT_NE("Instance:", line.substr(0, 9));
}

TEST(FFDC, ExtraValuesStandBetweenCauseAndEnd) {
  const Captures captures;
  const std::string first("first");
  const std::string empty;
  const std::string* null = nullptr;
  FFDCTest::capture(nullptr, &first, null, &empty);
  const Texts lines = captures.records().at(0);
  ASSERT_EQ(12U, lines.size());
  EXPECT_EQ("Probe:      FFDC_042", lines[6]);
  EXPECT_EQ("Cause:      null", lines[7]);
  EXPECT_EQ("Arg[0]:     first", lines[8]);
  EXPECT_EQ("Arg[1]:     null", lines[9]);
  EXPECT_EQ("Arg[2]:     ", lines[10]);
  EXPECT_EQ("[EOF]", lines[11]);
}

TEST(FFDC, NullExtraValueShowsNull) {
  const Captures captures;
  const std::string* null = nullptr;
  FFDCTest::capture(nullptr, null);
  EXPECT_EQ("Arg[0]:     null", captures.records().at(0).at(8));
}

TEST(FFDC, EmptyExtraValueShowsNothing) {
  const Captures captures;
  const std::string empty;
  FFDCTest::capture(nullptr, &empty);
  EXPECT_EQ("Arg[0]:     ", captures.records().at(0).at(8));
}

TEST(FFDC, WithoutLogDirectoryTheEventCarriesTheRecord) {
  const Captures captures;
  FFDC::capture("Class1", "method1", "probe", nullptr);
  ASSERT_EQ(1U, captures.announcements().size());
  const test::Recorded event = captures.announcements().front();
  const std::string record = event.message.substr(event.message.find("Level:      "));
  const RasDescriptor rd("FFDC", "com.kelvo.tessel.nativ.common.KTBNVMessages");
  EXPECT_EQ(NLS::format(rd, "KTBNV0150_FFDC_TAKEN", record), event.message);
  EXPECT_EQ("[EOF]\n", record.substr(record.size() - 6));
  EXPECT_EQ(70, event.level.getValue());
  EXPECT_EQ(5, event.type.getValue());
  EXPECT_EQ("FFDC", event.className);
}

// Captures a failure of its own while it is given one.
class Capturing : public LogHandler {
 public:
  explicit Capturing(Logger& logger, const NYXException* cause = nullptr)
      : LogHandler(LogLevel::ALL), logger_(logger), cause_(cause) {
    logger_.addHandler(*this);
  }
  ~Capturing() override { logger_.removeHandler(*this); }
  Capturing(const Capturing&) = delete;
  Capturing& operator=(const Capturing&) = delete;
  void publish(LogRecord& /*record*/) override { FFDC::capture("Inner", "publish", "probe", cause_); }

 private:
  Logger& logger_;
  const NYXException* cause_;
};

TEST(FFDC, CaptureRaisedWhileAnotherIsAnnouncedGoesToStandardError) {
  const Captures captures;
  const Capturing capturing(*Logger::getLogger("FFDC"));
  CapturedOutput error(CapturedOutput::error);
  FFDC::capture("Outer", "method1", "probe", nullptr);
  const Texts lines = test::linesOf(error.text());
  EXPECT_EQ(Texts{"Outer"}, captures.values("Class:"));
  ASSERT_EQ(9U, lines.size());
  EXPECT_EQ("Class:      Inner", lines[4]);
  EXPECT_EQ("[EOF]", lines[8]);
}

TEST(FFDC, EscapesInACaptureOnStandardErrorBecomeCharacters) {
  const Captures captures;
  const IPCException cause("caf\\u00E9");
  const Capturing capturing(*Logger::getLogger("FFDC"), &cause);
  CapturedOutput error(CapturedOutput::error);
  FFDC::capture("Outer", "method1", "probe", nullptr);
  EXPECT_EQ("Cause:      class IPCException: caf\xC3\xA9", test::linesOf(error.text()).at(7));
}

TEST(FFDC, NextCaptureIsAnnouncedAgain) {
  const Captures captures;
  {
    const Capturing capturing(*Logger::getLogger("FFDC"));
    CapturedOutput error(CapturedOutput::error);
    FFDC::capture("First", "method1", "probe", nullptr);
  }
  CapturedOutput error(CapturedOutput::error);
  FFDC::capture("Second", "method1", "probe", nullptr);
  EXPECT_EQ("", error.text());
  EXPECT_EQ((Texts{"First", "Second"}), captures.values("Class:"));
}

TEST(FFDC, CauseWithAPlaceholderIsCapturedAllTheSame) {
  const Captures captures;
  CapturedOutput error(CapturedOutput::error);
  const NYXException cause("what about {1}?");
  FFDC::capture("Class1", "method1", "probe", &cause);
  EXPECT_EQ(Texts{"class NYXException: what about {1}?"}, captures.values("Cause:"));
}

TEST(FFDC, CapturesOfSeveralThreadsStayWhole) {
  constexpr std::size_t kThreads = 8;
  constexpr std::size_t kCaptures = 25;
  const Captures captures;
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([] {
      for (std::size_t n = 0; n < kCaptures; ++n) FFDC::capture("Class1", "method1", "probe", nullptr);
    });
  }
  for (std::thread& thread : threads) thread.join();
  const auto records = captures.records();
  EXPECT_EQ(kThreads * kCaptures, records.size());
  for (const Texts& record : records) {
    EXPECT_EQ(9U, record.size());
    EXPECT_EQ("[EOF]", record.back());
  }
}

TEST(FFDC, EveryProbeHasItsNumber) {
  const std::array<std::string (*)(), 49> probes{
      &FFDC::PROBE_001, &FFDC::PROBE_002, &FFDC::PROBE_003, &FFDC::PROBE_004, &FFDC::PROBE_005, &FFDC::PROBE_006,
      &FFDC::PROBE_007, &FFDC::PROBE_008, &FFDC::PROBE_009, &FFDC::PROBE_010, &FFDC::PROBE_011, &FFDC::PROBE_012,
      &FFDC::PROBE_013, &FFDC::PROBE_014, &FFDC::PROBE_015, &FFDC::PROBE_016, &FFDC::PROBE_017, &FFDC::PROBE_018,
      &FFDC::PROBE_019, &FFDC::PROBE_020, &FFDC::PROBE_021, &FFDC::PROBE_022, &FFDC::PROBE_023, &FFDC::PROBE_024,
      &FFDC::PROBE_025, &FFDC::PROBE_026, &FFDC::PROBE_027, &FFDC::PROBE_028, &FFDC::PROBE_029, &FFDC::PROBE_030,
      &FFDC::PROBE_031, &FFDC::PROBE_032, &FFDC::PROBE_033, &FFDC::PROBE_034, &FFDC::PROBE_035, &FFDC::PROBE_036,
      &FFDC::PROBE_037, &FFDC::PROBE_038, &FFDC::PROBE_039, &FFDC::PROBE_040, &FFDC::PROBE_041, &FFDC::PROBE_042,
      &FFDC::PROBE_043, &FFDC::PROBE_044, &FFDC::PROBE_045, &FFDC::PROBE_046, &FFDC::PROBE_047, &FFDC::PROBE_048,
      &FFDC::PROBE_049};
  for (std::size_t i = 0; i < probes.size(); ++i) EXPECT_EQ(padded("FFDC_%03llu", i + 1), probes[i]());
}

}  // namespace
}  // namespace tessel
