// Java classes and methods that are not there, each in turn.
#include "jvm/Jvm.h"

#include <tessel/JavaEventLogHandler.h>
#include <tessel/JavaTraceFileLogHandler.h>
#include <tessel/TraceDataLogRecord.h>
#include <tessel/TraceEntryLogRecord.h>
#include <tessel/TraceExitLogRecord.h>
#include <tessel/TraceThrowingLogRecord.h>

#include "support/Captures.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

// What is missing, what the capture says, the capture's probe, and the calls of a full round that are left out.
struct Case {
  std::string missing;
  std::string text;
  std::string probe;
  std::vector<std::size_t> dropped;
};

const std::string kEventLog = "com.kelvo.tessel.ras.EventLog";
const std::string kTrace = "com.kelvo.tessel.ras.Trace";

const std::vector<Case> kEventCases{
    {"", "", "", {}},
    {kEventLog, kEventLog + " class not available", "FFDC_003", {0, 1, 2, 3}},
    {kEventLog + "#infoNoFormat", kEventLog + ".infoNoFormat method not available", "FFDC_004", {0}},
    {kEventLog + "#warningNoFormat", kEventLog + ".warningNoFormat method not available", "FFDC_005", {1}},
    {kEventLog + "#errorNoFormat", kEventLog + ".errorNoFormat method not available", "FFDC_006", {2}},
    {kEventLog + "#configNoFormat", kEventLog + ".configNoFormat method not available", "FFDC_007", {3}},
};

const std::vector<Case> kTraceCases{
    {"", "", "", {}},
    {kTrace, kTrace + " class not available", "FFDC_003", {0, 1, 2, 3, 4}},
    {kTrace + "#nativeMethodEntry", kTrace + ".entry method not available", "FFDC_004", {0}},
    {"com.kelvo.tessel.ras.ExitWithReturn#nativeMethodExit", kTrace + ".exit method not available", "FFDC_005", {1}},
    {"com.kelvo.tessel.ras.ExitWithoutReturn#nativeMethodExit",
     kTrace + ".exit (with no return) method not available",
     "FFDC_006",
     {2}},
    {kTrace + "#nativeMethodData", kTrace + ".data method not available", "FFDC_007", {3}},
    {kTrace + "#nativeMethodThrowing", kTrace + ".throwing method not available", "FFDC_008", {4}},
};

void publishEvents(JNIEnv& env) {
  JavaEventLogHandler handler(&env);
  for (const LogLevel level : {LogLevel::INFO, LogLevel::WARNING, LogLevel::SEVERE, LogLevel::CONFIG}) {
    LogRecord record(level, LogRecordType::EVENT, "text");
    record.setSourceClassName("C");
    handler.publish(record);
  }
  EXPECT_EQ(handler.getFailureCount(), 0U);
  EXPECT_FALSE(env.ExceptionCheck());
}

void publishTrace(JNIEnv& env) {
  JavaTraceFileLogHandler handler(&env);
  std::string value = "v";
  TraceEntryLogRecord entry(LogLevel::FINE, "");
  TraceExitLogRecord exitWithReturn(LogLevel::FINE, "");
  exitWithReturn.setArguments(1, &value);
  TraceExitLogRecord exit(LogLevel::FINE, "");
  TraceDataLogRecord data(LogLevel::FINE, "");
  TraceThrowingLogRecord throwing(LogLevel::FINE, "");
  for (LogRecord* record : std::initializer_list<LogRecord*>{&entry, &exitWithReturn, &exit, &data, &throwing}) {
    record->setSourceClassName("C");
    record->setSourceMethodName("m");
    handler.publish(*record);
  }
  EXPECT_EQ(handler.getFailureCount(), 0U);
  EXPECT_FALSE(env.ExceptionCheck());
}

Texts without(Texts all, const std::vector<std::size_t>& dropped) {
  for (auto index = dropped.rbegin(); index != dropped.rend(); ++index) {
    all.erase(all.begin() + static_cast<std::ptrdiff_t>(*index));
  }
  return all;
}

class MissingJava : public JvmTest {
 protected:
  static void check(const std::vector<Case>& cases, const std::string& handler, void (*publish)(JNIEnv&),
                    const Texts& all) {
    for (const Case& one : cases) {
      SCOPED_TRACE(one.missing);
      const Captures captures;
      Jvm::instance().inWorldWithout(one.missing, publish);
      EXPECT_EQ(calls::take(), without(all, one.dropped));
      if (one.missing.empty()) {
        EXPECT_TRUE(captures.records().empty());
      } else {
        EXPECT_EQ(captures.values("Class:"), Texts{handler});
        EXPECT_EQ(captures.values("Method:"), Texts{handler});
        EXPECT_EQ(captures.values("Probe:"), Texts{one.probe});
        EXPECT_EQ(captures.values("Cause:"), Texts{"null"});
        EXPECT_EQ(captures.values("Arg[0]:"), Texts{one.text});
      }
      EXPECT_EQ(calls::takeErrors(), "");
    }
  }
};

}  // namespace

TEST_F(MissingJava, OfTheEventLogIsCapturedAndOnlyItsRecordsAreDropped) {
  check(kEventCases, "JavaEventLogHandler", publishEvents,
        {"infoNoFormat(C, text)", "warningNoFormat(C, text)", "errorNoFormat(C, text)", "configNoFormat(C, text)"});
}

TEST_F(MissingJava, OfTraceIsCapturedAndOnlyItsRecordsAreDropped) {
  check(kTraceCases, "JavaTraceFileLogHandler", publishTrace,
        {"nativeMethodEntry(C, 0, m(Native Method), [])", "nativeMethodExit(C, 0, m(Native Method), v)",
         "nativeMethodExit(C, 0, m(Native Method))",
         "nativeMethodData(C, " + LogLevel(LogLevel::FINE).toString() + ", 0, m(Native Method), [])",
         "nativeMethodThrowing(C, 0, m(Native Method), Unknown Throwable)"});
}

}  // namespace tessel::test
