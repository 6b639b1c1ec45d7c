// The diagnostics of a native process, with their files.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include <tessel/EventLog.h>
#include <tessel/Logger.h>
#include <tessel/PropertyNotFoundException.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Trace.h>

#include "support/CapturedOutput.h"
#include "support/Diagnostics.h"
#include "support/FreshProcess.h"
#include "support/TempProduct.h"
#include "support/Thrown.h"

namespace tessel {
namespace {

using test::CapturedOutput;
using test::Diagnostics;
using test::DiagnosticsOptions;
using Texts = std::vector<std::string>;

DiagnosticsOptions withPrefix(const std::string& prefix) {
  DiagnosticsOptions options;
  options.prefix = prefix;
  return options;
}

DiagnosticsOptions of(RASEnvironment::RASEnvironmentValue environment) {
  DiagnosticsOptions options;
  options.environment = environment;
  return options;
}

// A trace point as a class of that name would make it.
void tracePoint(const std::string& className) {
  const RasDescriptor rd(className, "");
  if (rd.isFlowOn()) Trace::entry(rd, "method1");
  if (rd.isFlowOn()) Trace::exit(rd, "method1");
}

std::size_t linesOfClass(const Texts& lines, const std::string& shown) {
  constexpr std::size_t kClassColumn = 52;
  std::size_t count = 0;
  for (const std::string& line : lines) {
    if (line.size() > kClassColumn && line.compare(kClassColumn, shown.size() + 1, shown + " ") == 0) ++count;
  }
  return count;
}

bool isTraced(const std::string& logger) { return Logger::getLogger(logger)->isLoggable(LogLevel::FINE); }

TEST(RASInitialize, TakesEnvironmentPrefixAndLogDirectory) {
  const Diagnostics diagnostics(withPrefix("p.q"));
  EXPECT_EQ(RASEnvironment(RASEnvironment::DAEMON), RAS::getEnvironment());
  EXPECT_EQ("p.q", RAS::getTraceSpecNamePrefix());
  EXPECT_EQ(test::logDirectory().string(), RAS::getLogPath());
}

TEST(RASInitialize, WithoutLogDirectoryItFailsAndALaterOneWorks) {
  test::inFreshProcess([] {
    const test::TempFolder folder;
    const LogFileProperties events((folder.path() / "event%g.log").string(), 1000, 1, true, false);
    const LogFileProperties trace((folder.path() / "trace%g.log").string(), 1000, 1, true, false);
    const auto initialize = [&] { RAS::initialize(RASEnvironment::DAEMON, events, trace, "p"); };
    EXPECT_EQ("com.kelvo.tessel.native.logdir", test::thrownBy<PropertyNotFoundException>(initialize));
    EXPECT_EQ(RASEnvironment(RASEnvironment::UNSPECIFIED), RAS::getEnvironment());
    EXPECT_EQ("", RAS::getTraceSpecNamePrefix());
    EXPECT_EQ("", RAS::getLogPath());
    EXPECT_EQ(Texts(), test::namesIn(folder.path()));
    NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", folder.path().string());
    initialize();
    EXPECT_EQ(RASEnvironment(RASEnvironment::DAEMON), RAS::getEnvironment());
    EXPECT_EQ(folder.path().string(), RAS::getLogPath());
    EXPECT_EQ((Texts{"event0.log", "event0.log.lck"}), test::namesIn(folder.path()));
    RAS::shutdown();
  });
}

TEST(RASInitialize, EventsGoToTheEventLogOnly) {
  const Diagnostics diagnostics;
  const RasDescriptor rd("Class1", "");
  CapturedOutput output(CapturedOutput::output);
  CapturedOutput error(CapturedOutput::error);
  EventLog::errorNoFormat(rd, "text");
  EXPECT_EQ("", output.text());
  EXPECT_EQ("", error.text());
  ASSERT_EQ(1U, diagnostics.events().size());
  EXPECT_NE(std::string::npos, diagnostics.events().front().find(" Class1        E text"));
}

TEST(RASInitialize, ForegroundAndUnitTestProcessesAlsoShowEventsOnTheConsole) {
  for (const auto environment : {RASEnvironment::DAEMON_FOREGROUND, RASEnvironment::UNITTEST}) {
    const Diagnostics diagnostics(of(environment));
    const RasDescriptor rd("Class1", "");
    CapturedOutput output(CapturedOutput::output);
    EventLog::infoNoFormat(rd, "text");
    EXPECT_EQ("text\n", output.text());
    EXPECT_EQ(1U, diagnostics.events().size());
  }
}

TEST(RASInitialize, TraceFileIsMadeWhenAClassIsTraced) {
  const Diagnostics diagnostics;
  EXPECT_FALSE(std::filesystem::exists(diagnostics.traceFile()));
  RAS::setLevel("Class1=WARNING");
  EXPECT_FALSE(std::filesystem::exists(diagnostics.traceFile()));
  RAS::setLevel("Class1=FLOW");
  tracePoint("Class1");
  EXPECT_EQ(2U, linesOfClass(diagnostics.traceLines(), ".Class1"));
}

TEST(RASInitialize, OnlyTheClassesOfTheSpecificationReachTheTraceFile) {
  const Diagnostics diagnostics(withPrefix("p.q"));
  RAS::setLevel("p.q.Class1=FLOW:p.q.Class3");
  for (const char* name : {"Class1", "Class2", "Class3"}) tracePoint(name);
  const Texts lines = diagnostics.traceLines();
  EXPECT_EQ(2U, linesOfClass(lines, "p.q.Class1"));
  EXPECT_EQ(0U, linesOfClass(lines, "p.q.Class2"));
  EXPECT_EQ(2U, linesOfClass(lines, "p.q.Class3"));
}

TEST(RASInitialize, TraceHandlerIsAttachedOnce) {
  const Diagnostics diagnostics;
  RAS::setLevel("Class1=FLOW");
  RAS::setLevel("+Class2=FLOW");
  RAS::setLevel("+Class1=ALL");
  tracePoint("Class1");
  EXPECT_EQ(2U, linesOfClass(diagnostics.traceLines(), ".Class1"));
}

TEST(RASInitialize, TraceCanBeSwitchedOffAndOnAgain) {
  const Diagnostics diagnostics;
  for (int i = 1; i <= 3; ++i) {
    RAS::setLevel("Class1=FLOW");
    tracePoint("Class1");
    RAS::setLevel("");
    tracePoint("Class1");
    EXPECT_EQ(static_cast<std::size_t>(2 * i), linesOfClass(diagnostics.traceLines(), ".Class1"));
  }
}

TEST(RASInitialize, SpecificationGivenBeforehandIsAttachedByInitialize) {
  RAS::setLevel("Class1=FLOW");
  const Diagnostics diagnostics;
  tracePoint("Class1");
  EXPECT_EQ(2U, linesOfClass(diagnostics.traceLines(), ".Class1"));
}

TEST(RASInitialize, SpecificationWithoutTraceGivenBeforehandAttachesNothing) {
  RAS::setLevel("Class1=INFO");
  const Diagnostics diagnostics;
  EventLog::infoNoFormat(RasDescriptor("Class1", ""), "text");
  EXPECT_FALSE(std::filesystem::exists(diagnostics.traceFile()));
}

// With the prefix p.q, as a process has it.
TEST(RASInitialize, NamesAreReadUnderThePrefix) {
  const Diagnostics diagnostics(withPrefix("p.q"));
  RAS::setLevel("p.q.r=FLOW");
  EXPECT_TRUE(isTraced("r"));
  RAS::setLevel("p.q.a,p.q.b");
  EXPECT_TRUE(Logger::getLogger("a")->isLoggable(LogLevel::ALL));
  EXPECT_TRUE(Logger::getLogger("b")->isLoggable(LogLevel::ALL));
  EXPECT_FALSE(isTraced("r"));
}

TEST(RASInitialize, PrefixItselfAndWhatLiesAboveItMeanEveryClass) {
  const Diagnostics diagnostics(withPrefix("p.q"));
  for (const char* specification : {"p.q=ALL", "p=ALL", "=ALL", "p.q", "p", "p.q.=ALL"}) {
    RAS::setLevel(specification);
    EXPECT_TRUE(Logger::getLogger("")->isLoggable(LogLevel::ALL)) << specification;
    RAS::setLevel("");
    EXPECT_FALSE(isTraced("")) << specification;
  }
}

TEST(RASInitialize, NamesOutsideThePrefixAreIgnored) {
  const Diagnostics diagnostics(withPrefix("p.q"));
  Logger::getLogger("z");
  Logger::getLogger("p.x");
  RAS::setLevel("z=FLOW:p.x=FLOW:P.Q.z=FLOW:.p.q.z=FLOW");
  for (const char* name : {"", "z", "p.x", "x"}) EXPECT_FALSE(isTraced(name)) << name;
}

TEST(RASInitialize, NameThatBeginsWithThePrefixNeedsNoDotBehindIt) {
  const Diagnostics diagnostics(withPrefix("p.q"));
  RAS::setLevel("p.qrest=FLOW");
  EXPECT_TRUE(isTraced("rest"));
}

TEST(RASInitialize, PlusKeepsAndItsAbsenceDiscardsUnderThePrefix) {
  const Diagnostics diagnostics(withPrefix("p.q"));
  RAS::setLevel("p.q.a=FLOW");
  RAS::setLevel("+p.q.c=VERBOSE");
  EXPECT_TRUE(isTraced("a"));
  RAS::setLevel("p.q.c=VERBOSE");
  EXPECT_FALSE(isTraced("a"));
  EXPECT_TRUE(isTraced("c"));
}

TEST(RASInitialize, SwitchingTraceOffKeepsTheEventsOfTheTracedClasses) {
  const Diagnostics diagnostics;
  const RasDescriptor rd("Class1", "");
  RAS::setLevel("=ALL:Class1=ALL");
  RAS::setLevel("");
  const std::size_t before = diagnostics.events().size();
  EventLog::infoNoFormat(rd, "still there");
  EXPECT_EQ(before + 1, diagnostics.events().size());
  EventLog::configNoFormat(rd, "below INFO");
  EXPECT_EQ(before + 1, diagnostics.events().size());
}

TEST(RASInitialize, ConfigEventsAppearWhenTheClassIsSetToConfig) {
  const Diagnostics diagnostics;
  const RasDescriptor rd("Class1", "");
  RAS::setLevel("Class1=CONFIG");
  const std::size_t before = diagnostics.events().size();
  EventLog::configNoFormat(rd, "text");
  ASSERT_EQ(before + 1, diagnostics.events().size());
  EXPECT_NE(std::string::npos, diagnostics.events().back().find(" Class1        C text"));
}

TEST(RASInitialize, SecondOneOfARealProcessChangesTheEnvironmentOnly) {
  const Diagnostics diagnostics(withPrefix("first"));
  const test::TempFolder other;
  const LogFileProperties file((other.path() / "x%g.log").string(), 1000, 1, true, false);
  RAS::initialize(RASEnvironment::DAEMON_FOREGROUND, file, file, "second");
  EXPECT_EQ(RASEnvironment(RASEnvironment::DAEMON_FOREGROUND), RAS::getEnvironment());
  EXPECT_EQ("first", RAS::getTraceSpecNamePrefix());
  EXPECT_EQ(Texts(), test::namesIn(other.path()));
  CapturedOutput output(CapturedOutput::output);
  EventLog::infoNoFormat(RasDescriptor("Class1", ""), "text");
  EXPECT_EQ("", output.text());
  EXPECT_EQ(1U, diagnostics.events().size());
}

TEST(RASInitialize, UnitTestProcessIsSetUpAnewUnderTheSameNames) {
  const Diagnostics diagnostics(of(RASEnvironment::UNITTEST));
  RAS::setLevel("Class1=FLOW");
  tracePoint("Class1");
  diagnostics.initialize();
  EXPECT_EQ((Texts{"event0.log", "event0.log.lck", "trace0.log"}), test::namesIn(diagnostics.folder()));
  tracePoint("Class1");
  EXPECT_EQ((Texts{"event0.log", "event0.log.lck", "trace0.log", "trace0.log.lck"}),
            test::namesIn(diagnostics.folder()));
  EXPECT_EQ(4U, linesOfClass(diagnostics.traceLines(), ".Class1"));
  const std::size_t before = diagnostics.events().size();
  CapturedOutput output(CapturedOutput::output);
  EventLog::infoNoFormat(RasDescriptor("Class1", ""), "text");
  EXPECT_EQ("text\n", output.text());
  EXPECT_EQ(before + 1, diagnostics.events().size());
}

TEST(RASInitialize, FailingHandlersAreReportedByThemselvesAndNothingIsThrown) {
  test::logDirectory();
  const test::TempFolder folder;
  const std::string blocked = (folder.write("file", "") / "x%g.log").string();
  const LogFileProperties file(blocked, 1000, 1, true, false);
  CapturedOutput error(CapturedOutput::error);
  RAS::initialize(RASEnvironment::DAEMON, file, file, "");
  RAS::setLevel("Class1=FLOW");
  tracePoint("Class1");
  RAS::shutdown();
  const Texts lines = test::linesOf(error.text());
  ASSERT_EQ(3U, lines.size());
  EXPECT_EQ("KTBNV0126E: ", lines[0].substr(0, 12));
  EXPECT_NE(std::string::npos, lines[1].find("KTBNV0018I: ")) << lines[1];
  EXPECT_NE(std::string::npos, lines[2].find("KTBNV0127E: ")) << lines[2];
}

// A text of the event log's banner and one of the trace's do not fit what is filled in.
TEST(RASInitialize, FailuresCapturedMeanwhileAreFilesAndEventsAlready) {
  test::inFreshProcess([] {
    const test::TempProduct product;
    product.writeCatalogue("KTBNVMessages", "KTBNV0084_FFDC_TAKEN=taken: {0}\n");
    product.writeCatalogue("KTBNVElements", "KTBNV_START_LOG_BANNER1=title {0}\nKTBNV_DATE=date\n");
    CapturedOutput error(CapturedOutput::error);
    const Diagnostics diagnostics;
    const Texts printed = test::linesOf(error.text());
    const Texts names = test::namesIn(Diagnostics::captureFolder());
    ASSERT_EQ(2U, names.size());
    const auto announced = [](const std::string& name) {
      return " FFDC          E taken: " + test::logDirectory().string() + "/ffdc/" + name;
    };
    ASSERT_EQ(1U, printed.size()) << "there is no event log yet";
    EXPECT_NE(std::string::npos, printed[0].find(announced(names[0]))) << printed[0];
    ASSERT_EQ(1U, diagnostics.events().size());
    EXPECT_NE(std::string::npos, diagnostics.events()[0].find(announced(names[1]))) << diagnostics.events()[0];
  });
}

TEST(RASInitialize, ShutdownLeavesEverythingAsBefore) {
  {
    const Diagnostics diagnostics(withPrefix("p.q"));
    RAS::setLevel("p.q.Class1=FLOW:=ALL");
    RAS::setDebugLevel(TraceLevel::FLOW);
  }
  EXPECT_EQ(RASEnvironment(RASEnvironment::UNSPECIFIED), RAS::getEnvironment());
  EXPECT_EQ("", RAS::getTraceSpecNamePrefix());
  EXPECT_EQ("", RAS::getLogPath());
  EXPECT_FALSE(RAS::isTraceAvailable());
  EXPECT_FALSE(RAS::isDebugOn(TraceLevel::FLOW));
  EXPECT_FALSE(isTraced(""));
  EXPECT_FALSE(isTraced("Class1"));
  EXPECT_TRUE(Logger::getLogger("Class1")->isLoggable(LogLevel::INFO));
}

TEST(RASInitialize, ShutdownReleasesFilesAndLocksAndTheNextOneGetsTheSameNames) {
  test::logDirectory();
  const test::TempFolder folder;
  const LogFileProperties events((folder.path() / "event%g.log").string(), 1 << 20, 2, true, false);
  const LogFileProperties trace((folder.path() / "trace%g.log").string(), 1 << 20, 2, true, false);
  for (int i = 0; i < 3; ++i) {
    RAS::initialize(RASEnvironment::DAEMON, events, trace, "");
    RAS::setLevel("Class1=FLOW");
    tracePoint("Class1");
    RAS::shutdown();
    EXPECT_EQ((Texts{"event0.log", "trace0.log"}), test::namesIn(folder.path()));
  }
}

TEST(RASInitialize, TextOfTheLogPathOutlivesShutdown) {
  const std::string* path = nullptr;
  {
    const Diagnostics diagnostics;
    path = &RAS::getLogPath();
  }
  EXPECT_EQ(test::logDirectory().string(), *path);
}

TEST(RASInitialize, ShutdownWithoutInitializeOrTwiceDoesNothing) {
  test::inFreshProcess([] {
    RAS::shutdown();
    EXPECT_FALSE(RAS::isTraceAvailable());
    { const Diagnostics diagnostics; }
    RAS::shutdown();
    RAS::shutdown();
    EXPECT_EQ("", RAS::getLogPath());
  });
}

TEST(RASInitialize, EventsAfterShutdownGoToStandardErrorAgain) {
  { const Diagnostics diagnostics; }
  CapturedOutput error(CapturedOutput::error);
  EventLog::warningNoFormat(RasDescriptor("Class1", ""), "text");
  EXPECT_NE(std::string::npos, error.text().find(" Class1        W text\n"));
}

TEST(RASInitialize, JavaProcessReportsNoTraceChange) {
  const Diagnostics diagnostics;
  RAS::setLevel("Class1=INFO");
  ASSERT_EQ(1U, diagnostics.events().size());
  const LogFileProperties unused = diagnostics.properties("unused", 1000);
  RAS::initialize(RASEnvironment::JAVA_APP, unused, unused, "");
  RAS::setLevel("Class1=INFO");
  EXPECT_EQ(1U, diagnostics.events().size());
}

}  // namespace
}  // namespace tessel
