// Captures with a log directory: each is a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <tessel/FFDC.h>
#include <tessel/IPCException.h>
#include <tessel/NLS.h>
#include <tessel/RasDescriptor.h>

#include "support/CapturedOutput.h"
#include "support/Captures.h"
#include "support/Diagnostics.h"
#include "support/Thrown.h"

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
using test::Diagnostics;
using Texts = std::vector<std::string>;

void capture(const std::string& className = "Class1") { FFDC::capture(className, "method1", "probe", nullptr); }

std::vector<std::string> captureNames() { return test::namesIn(Diagnostics::captureFolder()); }

// The number of the capture in its file's name.
int numberOf(const std::string& name) {
  std::smatch match;
  if (!std::regex_match(name, match, std::regex(R"(FFDC\.\d{14}\.(\d+)\.\d+\.log)"))) return -1;
  return std::stoi(match[1]);
}

TEST(FFDCFiles, FileHoldsItsNameAndTheRecord) {
  const Diagnostics diagnostics;
  const IPCException cause("broken");
  const std::string value("value");
  FFDC::capture("Class1", "method1", FFDC::PROBE_007(), &cause);
  FFDCTest::capture(&value, &value);
  const auto captures = Diagnostics::captures();
  ASSERT_EQ(2U, captures.size());
  const Texts& lines = captures[0];
  ASSERT_EQ(10U, lines.size());
  EXPECT_EQ("Filename:   " + test::logDirectory().string() + "/ffdc/" + captureNames().at(0), lines[0]);
  EXPECT_EQ("Level:      ", lines[1].substr(0, 12));
  EXPECT_EQ("Time:       ", lines[2].substr(0, 12));
  EXPECT_EQ("Class:      Class1", lines[5]);
  EXPECT_EQ("Probe:      FFDC_007", lines[7]);
  EXPECT_EQ("Cause:      class IPCException: broken", lines[8]);
  EXPECT_EQ("[EOF]", lines[9]);
  EXPECT_EQ(12U, captures[1].size());
  EXPECT_EQ("Arg[0]:     value", captures[1][10]);
}

TEST(FFDCFiles, EscapesInTheCauseBecomeCharacters) {
  const Diagnostics diagnostics;
  const IPCException cause("caf\\u00E9");
  FFDC::capture("Class1", "method1", "probe", &cause);
  EXPECT_EQ("Cause:      class IPCException: caf\xC3\xA9", Diagnostics::captures().at(0).at(8));
}

TEST(FFDCFiles, NameHasTheLocalTimeTheNumberAndTheProcess) {
  const Diagnostics diagnostics;
  const std::time_t before = std::time(nullptr);
  capture();
  const std::time_t after = std::time(nullptr) + 1;  // the C library's clock may lag by a tick
  const std::string name = captureNames().at(0);
  Texts times;
  for (std::time_t second = before; second <= after; ++second) {
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", std::localtime(&second));
    times.emplace_back(text.data());
  }
  std::smatch match;
  ASSERT_TRUE(std::regex_match(name, match, std::regex(R"(FFDC\.(\d{14})\.\d+\.(\d+)\.log)"))) << name;
  EXPECT_NE(times.end(), std::find(times.begin(), times.end(), match[1].str())) << name;
  EXPECT_EQ("Process ID: " + match[2].str(), Diagnostics::captures().at(0).at(3));
}

TEST(FFDCFiles, NumbersOfTheCapturesFollowEachOther) {
  const Diagnostics diagnostics;
  for (int i = 0; i < 3; ++i) capture();
  std::set<int> numbers;
  for (const std::string& name : captureNames()) numbers.insert(numberOf(name));
  ASSERT_EQ(3U, numbers.size());
  EXPECT_EQ(*numbers.begin() + 2, *numbers.rbegin());
}

TEST(FFDCFiles, CaptureIsAnnouncedByThePathOfItsFile) {
  const Diagnostics diagnostics;
  const test::RecordingHandler announced("FFDC", LogLevel::CONFIG);
  capture();
  ASSERT_EQ(1U, announced.records().size());
  const std::string path = test::logDirectory().string() + "/ffdc/" + captureNames().at(0);
  EXPECT_EQ(test::messageText("KTBNV0084_FFDC_TAKEN", path), announced.messages().at(0));
  EXPECT_EQ(70, announced.records().at(0).level.getValue());
  const Texts events = diagnostics.events();
  ASSERT_EQ(1U, events.size());
  EXPECT_NE(std::string::npos, events[0].find(" FFDC          E KTBNV0084E: ")) << events[0];
}

TEST(FFDCFiles, FileIsCompleteWhenItIsAnnounced) {
  class Looking : public LogHandler {
   public:
    Looking() : LogHandler(LogLevel::ALL) {}
    void publish(LogRecord& /*record*/) override { seen = Diagnostics::captures().at(0).back(); }
    std::string seen;
  };
  const Diagnostics diagnostics;
  Looking looking;
  Logger::getLogger("FFDC")->addHandler(looking);
  capture();
  Logger::getLogger("FFDC")->removeHandler(looking);
  EXPECT_EQ("[EOF]", looking.seen);
}

// A plain file where the folder of the captures belongs.
TEST(FFDCFiles, WithoutFolderTheReasonAndTheWholeRecordAreEvents) {
  const Diagnostics diagnostics;
  std::ofstream(Diagnostics::captureFolder()) << "in the way";
  const test::RecordingHandler announced("FFDC", LogLevel::CONFIG);
  capture();
  std::filesystem::remove(Diagnostics::captureFolder());
  ASSERT_EQ(2U, announced.records().size());
  EXPECT_EQ(test::messageText("KTBNV0051_MKDIR_FAILED", test::logDirectory().string() + "/ffdc", "0"),
            announced.messages().at(0));
  const std::string record = announced.messages().at(1).substr(announced.messages().at(1).find("Level:      "));
  EXPECT_EQ(test::messageText("KTBNV0150_FFDC_TAKEN", record), announced.messages().at(1));
  EXPECT_EQ("[EOF]\n", record.substr(record.size() - 6));
  EXPECT_EQ(70, announced.records().at(0).level.getValue());
  EXPECT_EQ(70, announced.records().at(1).level.getValue());
}

TEST(FFDCFiles, NextCaptureWritesAFileAgain) {
  const Diagnostics diagnostics;
  std::ofstream(Diagnostics::captureFolder()) << "in the way";
  capture();
  std::filesystem::remove(Diagnostics::captureFolder());
  capture();
  EXPECT_EQ(1U, Diagnostics::captures().size());
}

TEST(FFDCFiles, AfterShutdownTheWholeRecordIsAnnounced) {
  { const Diagnostics diagnostics; }
  const test::Captures captures;
  capture("Late");
  EXPECT_EQ(Texts{"Late"}, captures.values("Class:"));
  EXPECT_FALSE(std::filesystem::exists(Diagnostics::captureFolder()));
}

// Captures a failure of its own while it is given one.
class Capturing : public LogHandler {
 public:
  Capturing() : LogHandler(LogLevel::ALL) { Logger::getLogger("FFDC")->addHandler(*this); }
  ~Capturing() override { Logger::getLogger("FFDC")->removeHandler(*this); }
  Capturing(const Capturing&) = delete;
  Capturing& operator=(const Capturing&) = delete;
  void publish(LogRecord& /*record*/) override { capture("Inner"); }
};

TEST(FFDCFiles, CaptureRaisedWhileAnotherIsAnnouncedIsPrintedAndMakesNoFile) {
  const Diagnostics diagnostics;
  CapturedOutput error(CapturedOutput::error);
  {
    const Capturing capturing;
    capture("Outer");
  }
  const Texts lines = test::linesOf(error.text());
  ASSERT_EQ(9U, lines.size());
  EXPECT_EQ("Class:      Inner", lines[4]);
  EXPECT_EQ("[EOF]", lines[8]);
  const auto captures = Diagnostics::captures();
  ASSERT_EQ(1U, captures.size());
  EXPECT_EQ("Class:      Outer", captures[0].at(5));
}

// Both threads are announcing when the inner captures come: each of those is printed, each outer one is a file.
TEST(FFDCFiles, CapturesOfTwoThreadsRaisedWhileCapturesAreAnnouncedStayApart) {
  constexpr int kCaptures = 50;
  const Diagnostics diagnostics;
  CapturedOutput error(CapturedOutput::error);
  {
    const Capturing capturing;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([] {
        for (int n = 0; n < kCaptures; ++n) capture("Outer");
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  const Texts printed = test::linesOf(error.text());
  EXPECT_EQ(2 * kCaptures, std::count(printed.begin(), printed.end(), "Class:      Inner"));
  EXPECT_EQ(2 * kCaptures, std::count(printed.begin(), printed.end(), "[EOF]"));
  const auto captures = Diagnostics::captures();
  ASSERT_EQ(2U * kCaptures, captures.size());
  for (const Texts& lines : captures) {
    EXPECT_EQ(10U, lines.size());
    EXPECT_EQ("Class:      Outer", lines.at(5));
    EXPECT_EQ("[EOF]", lines.back());
  }
}

// An exception that the announcement meets leaves nothing behind: the next capture is an ordinary one.
TEST(FFDCFiles, FailingAnnouncementDoesNotStopTheNextCapture) {
  class Failing : public LogHandler {
   public:
    Failing() : LogHandler(LogLevel::ALL) {}
    void publish(LogRecord& /*record*/) override { throw NYXException("failing"); }
  };
  const Diagnostics diagnostics;
  Failing failing;
  CapturedOutput error(CapturedOutput::error);
  Logger::getLogger("FFDC")->addHandler(failing);
  capture("First");
  Logger::getLogger("FFDC")->removeHandler(failing);
  capture("Second");
  EXPECT_EQ("", error.text());
  EXPECT_EQ(2U, Diagnostics::captures().size());
}

}  // namespace
}  // namespace tessel
