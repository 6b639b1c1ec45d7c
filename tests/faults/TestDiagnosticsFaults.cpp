// The diagnostics when the system refuses what their files need.
#include <windows.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Trace.h>

#include "support/CapturedOutput.h"
#include "support/Captures.h"
#include "support/Diagnostics.h"
#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/RareError.h"
#include "support/RecordingHandler.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

using OpenHook = ImportHook<"fopen", FILE*(const char*, const char*)>;
using LowWriteHook = ImportHook<"_write", int(int, const void*, unsigned)>;
using WriteHook = ImportHook<"WriteFile", decltype(WriteFile)>;
using CreateFileHook = ImportHook<"CreateFileA", decltype(CreateFileA)>;
using SecurityHook = ImportHook<"SetFileSecurityA", decltype(SetFileSecurityA)>;
using EventHook = ImportHook<"CreateEventA", decltype(CreateEventA)>;

bool isCapture(const char* path) { return std::strstr(path, "FFDC.") != nullptr; }

void capture(const std::string& className = "Class1") { FFDC::capture(className, "method1", "probe", nullptr); }

class CaptureFaults : public testing::Test {
 protected:
  // The next capture is an ordinary one, and nothing was left open.
  ~CaptureFaults() override {
    const std::size_t before = Diagnostics::captures().size();
    capture("Next");
    const auto captures = Diagnostics::captures();
    EXPECT_EQ(before + 1, captures.size());
    EXPECT_EQ("[EOF]", captures.back().back());
    EXPECT_EQ(handles.growth(), 0);
  }

  // The first capture of the process opens what stays.
  static void SetUpTestSuite() {
    const Diagnostics diagnostics;
    capture();
  }

  std::string announced(std::size_t number) const { return events.messages().at(number); }

  // The path of the capture that an announcement names.
  static std::string capturePath(const std::string& text) {
    const std::size_t start = text.find(logDirectory().string());
    return text.substr(start, text.find(".log", start) + 4 - start);
  }

  void expectWholeRecordAnnounced(std::size_t number) const {
    const std::string text = announced(number);
    const std::string record = text.substr(text.find("Level:      "));
    EXPECT_EQ(messageText("KTBNV0150_FFDC_TAKEN", record), text);
    EXPECT_EQ("[EOF]\n", record.substr(record.size() - 6));
  }

  const Diagnostics diagnostics;
  const RecordingHandler events{"FFDC", LogLevel::CONFIG};
  const HandleBaseline handles;
};

TEST_F(CaptureFaults, AFileThatCannotBeOpenedIsReportedAndTheRecordAnnounced) {
  {
    OpenHook hook;
    hook.replaceWith([&](const char* path, const char* mode) -> FILE* {
      if (!isCapture(path)) return hook.callOriginal(path, mode);
      SetLastError(kRareError);
      return nullptr;
    });
    capture();
  }
  ASSERT_EQ(2U, events.records().size());
  EXPECT_EQ(messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", capturePath(announced(0)), kRareText), announced(0));
  EXPECT_EQ(70, events.records()[0].level.getValue());
  expectWholeRecordAnnounced(1);
}

TEST_F(CaptureFaults, AFileThatCannotBeWrittenIsReportedAndTheRecordAnnounced) {
  {
    LowWriteHook hook;
    hook.replaceWith([&](int descriptor, const void* bytes, unsigned size) {
      if (descriptor <= 2) return hook.callOriginal(descriptor, bytes, size);
      errno = ENOSPC;
      SetLastError(kRareError);
      return -1;
    });
    capture();
  }
  ASSERT_EQ(2U, events.records().size());
  EXPECT_EQ(messageText("KTBNV0083_UNABLE_TO_WRITE_TO_FFDC_FILE", capturePath(announced(0)), kRareText), announced(0));
  EXPECT_EQ(70, events.records()[0].level.getValue());
  expectWholeRecordAnnounced(1);
}

TEST_F(CaptureFaults, AFileThatCannotBeRestrictedIsWrittenWithAWarning) {
  capture("First");  // makes the folder
  {
    SecurityHook hook;
    hook.failOnce(kRareError);
    capture("Second");
  }
  ASSERT_EQ(3U, events.records().size());
  const std::string path = capturePath(announced(1));
  EXPECT_EQ(messageText("KTBNV0148_UNABLE_TO_MKPRIV_FFDC_FILE", path,
                        messageText("KTBNV0031_SETFILESECURITY_ERROR", kRareText, path)),
            announced(1));
  EXPECT_EQ(60, events.records()[1].level.getValue());
  EXPECT_EQ(messageText("KTBNV0084_FFDC_TAKEN", path), announced(2));
}

TEST_F(CaptureFaults, AFolderThatCannotBeRestrictedIsReportedAndTheRecordAnnounced) {
  {
    SecurityHook hook;
    hook.failOnce(kRareError);
    capture();
  }
  ASSERT_EQ(2U, events.records().size());
  EXPECT_EQ(messageText("KTBNV0031_SETFILESECURITY_ERROR", kRareText, logDirectory().string() + "/ffdc"), announced(0));
  expectWholeRecordAnnounced(1);
}

// From the open that fails on there is no memory for a text as long as the record.
TEST_F(CaptureFaults, AnAnnouncementWithoutMemoryIsGivenUpWithoutAnException) {
  constexpr std::size_t kLong = 1U << 20U;
  {
    ImportHook<"malloc", void*(std::size_t)> memory;
    OpenHook open;
    open.replaceWith([&](const char* path, const char* mode) -> FILE* {
      if (!isCapture(path)) return open.callOriginal(path, mode);
      memory.replaceWith([&](std::size_t size) { return size < kLong ? memory.callOriginal(size) : nullptr; });
      SetLastError(kRareError);
      return nullptr;
    });
    capture(std::string(kLong, 'x'));
  }
  ASSERT_EQ(1U, events.records().size());
  EXPECT_EQ(messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", capturePath(announced(0)), kRareText), announced(0));
}

void tracePoint() {
  const RasDescriptor rd("Traced", "");
  if (rd.isFlowOn()) Trace::entry(rd, "method1");
  if (rd.isFlowOn()) Trace::exit(rd, "method1");
}

TEST(LogFileFaults, AnEventThatCannotBeWrittenIsPrintedAndTheNextOneIsWritten) {
  const Diagnostics diagnostics;
  const RasDescriptor rd("Class1", "");
  CapturedOutput error(CapturedOutput::error);
  {
    WriteHook hook;
    hook.failAlways(kRareError);
    EventLog::infoNoFormat(rd, "one");
    EventLog::infoNoFormat(rd, "two");
  }
  EventLog::infoNoFormat(rd, "three");
  const Texts lines = linesOf(error.text());
  ASSERT_EQ(3U, lines.size());
  EXPECT_EQ(shownMessage("KTBNV0052_UNABLE_TO_WRITE_TO_EVENT_LOG", diagnostics.folder().string(),
                         messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", diagnostics.eventFile().string(), kRareText)),
            lines[0]);
  EXPECT_NE(std::string::npos, lines[1].find(" Class1        I one"));
  EXPECT_NE(std::string::npos, lines[2].find(" Class1        I two"));
  ASSERT_EQ(1U, diagnostics.events().size());
  EXPECT_NE(std::string::npos, diagnostics.events()[0].find(" Class1        I three"));
}

TEST(LogFileFaults, TraceThatCannotBeWrittenIsReportedOnceAndGoesOnAfterwards) {
  const Diagnostics diagnostics;
  RAS::setLevel("Traced=FLOW");
  tracePoint();
  const RecordingHandler reports("TraceFileLogHandler");
  CapturedOutput error(CapturedOutput::error);  // the event log cannot be written either
  {
    WriteHook hook;
    hook.failAlways(kRareError);
    tracePoint();
    tracePoint();
  }
  tracePoint();
  error.text();
  EXPECT_EQ(
      Texts{messageText("KTBNV0053_UNABLE_TO_WRITE_TO_TRACE", diagnostics.folder().string(),
                        messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", diagnostics.traceFile().string(), kRareText))},
      reports.messages());
  EXPECT_EQ(4U, diagnostics.traceLines().size());
}

TEST(LogFileFaults, ATraceFileThatCannotBeOpenedIsReportedOnce) {
  const Diagnostics diagnostics;
  const RecordingHandler reports("TraceFileLogHandler");
  {
    CreateFileHook hook;
    hook.failAlways(kRareError, INVALID_HANDLE_VALUE);
    RAS::setLevel("Traced=FLOW");
    tracePoint();
  }
  tracePoint();
  EXPECT_EQ(
      Texts{messageText("KTBNV0127_UNABLE_TO_CREATE_TRACE", diagnostics.folder().string(),
                        messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", diagnostics.traceFile().string(), kRareText))},
      reports.messages());
}

TEST(LogFileFaults, AnEventLogThatCannotBeOpenedIsReportedOnStandardErrorAndKeepsNothingOpen) {
  logDirectory();
  const TempFolder folder;
  const LogFileProperties files((folder.path() / "x%g.log").string(), 1000, 2, true, false);
  const auto cycle = [&] {
    CapturedOutput error(CapturedOutput::error);
    {
      CreateFileHook hook;
      hook.failAlways(kRareError, INVALID_HANDLE_VALUE);
      RAS::initialize(RASEnvironment::DAEMON, files, files, "");
      RAS::shutdown();
    }
    return linesOf(error.text());
  };
  cycle();
  const HandleBaseline handles;
  const Texts lines = cycle();
  EXPECT_EQ(2, handles.growth()) << "the monitors of the event log's file and of the trace handler";
  EXPECT_EQ(Texts(), namesIn(folder.path()));
  ASSERT_EQ(1U, lines.size());
  EXPECT_EQ(shownMessage("KTBNV0126_UNABLE_TO_CREATE_EVENT_LOG", folder.path().string(),
                         messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", (folder.path() / "x0.log").string(), kRareText)),
            lines[0]);
}

// The monitors of the handlers are made inside initialize. The event log's own comes first.
class MonitorsFail {
 public:
  MonitorsFail() {
    hook_.replaceWith([this](LPSECURITY_ATTRIBUTES access, BOOL manual, BOOL set, LPCSTR name) -> HANDLE {
      if (hook_.calls() < 2) return hook_.callOriginal(access, manual, set, name);
      SetLastError(kRareError);
      return nullptr;
    });
  }

 private:
  EventHook hook_;
};

void expectNotInitialised() {
  EXPECT_EQ("", RAS::getLogPath());
  EXPECT_EQ("", RAS::getTraceSpecNamePrefix());
  EXPECT_EQ(RASEnvironment(RASEnvironment::UNSPECIFIED), RAS::getEnvironment());
  CapturedOutput error(CapturedOutput::error);
  EventLog::warningNoFormat(RasDescriptor("Class1", ""), "early");
  EXPECT_NE(std::string::npos, error.text().find(" Class1        W early"));
}

TEST(LogFileFaults, InitializeThatFailsLeavesNoHandlerAndALaterOneWorks) {
  logDirectory();
  const TempFolder folder;
  const LogFileProperties files((folder.path() / "x%g.log").string(), 1000, 2, true, false);
  const auto initialize = [&] { RAS::initialize(RASEnvironment::UNITTEST, files, files, "p.q"); };
  // The second time there is something to set up anew.
  for (int i = 0; i < 2; ++i) {
    {
      const MonitorsFail fail;
      EXPECT_EQ(messageText("KTBNV0008_UNABLE_TO_CREATE_EVENT", kRareText), thrownBy<NYXException>(initialize));
    }
    expectNotInitialised();
    EXPECT_EQ(Texts{"x0.log"}, namesIn(folder.path()));
    initialize();
    EXPECT_EQ(logDirectory().string(), RAS::getLogPath());
    EXPECT_EQ((Texts{"x0.log", "x0.log.lck"}), namesIn(folder.path()));
  }
  RAS::shutdown();
}

}  // namespace
}  // namespace tessel::test
