// Trace records on their way into the Java class Trace.
#include "jvm/Jvm.h"

#include <regex>
#include <thread>

#include <tessel/JavaTraceFileLogHandler.h>
#include <tessel/NYXException.h>
#include <tessel/TraceDataLogRecord.h>
#include <tessel/TraceEntryLogRecord.h>
#include <tessel/TraceExitLogRecord.h>
#include <tessel/TraceThrowingLogRecord.h>

#include "support/Captures.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

const void* const kObject = reinterpret_cast<const void*>(0x1234);

class JavaTrace : public JvmTest {
 protected:
  template <class Record>
  static Record named(const LogLevel& level, std::vector<std::string> arguments = {}) {
    Record record(level, "  { ");
    name(record);
    record.setArguments(static_cast<unsigned>(arguments.size()), arguments.data());
    return record;
  }

  static void name(LogRecord& record) {
    record.setSourceClassName("p.q.ResourceBundle");
    record.setSourceMethodName("getBundle");
    record.setObjectReference(kObject);
  }

  // The calls that one record leads to.
  static Texts callsFor(LogRecord&& record, const LogLevel& level = LogLevel::FINEST) {
    JavaTraceFileLogHandler handler(&Jvm::instance().env(), level);
    handler.publish(record);
    EXPECT_EQ(handler.getFailureCount(), 0U);
    return calls::take();
  }
};

}  // namespace

TEST_F(JavaTrace, AnEntryGoesWithItsArguments) {
  EXPECT_EQ(callsFor(named<TraceEntryLogRecord>(LogLevel::FINE)),
            Texts{"nativeMethodEntry(p.q.ResourceBundle, 4660, getBundle(Native Method), [])"});
  EXPECT_EQ(callsFor(named<TraceEntryLogRecord>(LogLevel::FINE, {"a", "", "\\u00fc"})),
            Texts{"nativeMethodEntry(p.q.ResourceBundle, 4660, getBundle(Native Method), [a, , <00fc>])"});
}

TEST_F(JavaTrace, FiveArgumentsAreKept) {
  EXPECT_EQ(callsFor(named<TraceEntryLogRecord>(LogLevel::FINE, {"1", "2", "3", "4", "5", "6"})),
            Texts{"nativeMethodEntry(p.q.ResourceBundle, 4660, getBundle(Native Method), [1, 2, 3, 4, 5])"});
}

TEST_F(JavaTrace, AnExitGoesWithOrWithoutItsValue) {
  EXPECT_EQ(callsFor(named<TraceExitLogRecord>(LogLevel::FINE)),
            Texts{"nativeMethodExit(p.q.ResourceBundle, 4660, getBundle(Native Method))"});
  EXPECT_EQ(callsFor(named<TraceExitLogRecord>(LogLevel::FINE, {"7"})),
            Texts{"nativeMethodExit(p.q.ResourceBundle, 4660, getBundle(Native Method), 7)"});
  EXPECT_EQ(callsFor(named<TraceExitLogRecord>(LogLevel::FINE, {""})),
            Texts{"nativeMethodExit(p.q.ResourceBundle, 4660, getBundle(Native Method), )"});
}

TEST_F(JavaTrace, DataGoesWithItsLevel) {
  for (const LogLevel level : {LogLevel::FINE, LogLevel::FINER, LogLevel::FINEST}) {
    EXPECT_EQ(callsFor(named<TraceDataLogRecord>(level, {"x", "y"})),
              Texts{"nativeMethodData(p.q.ResourceBundle, " + level.toString() +
                    ", 4660, getBundle(Native Method), [x, y])"});
  }
}

TEST_F(JavaTrace, WhatIsThrownGoesAsItsText) {
  const NYXException cause("no memory");
  const NYXException thrown("cannot read", &cause);
  auto record = named<TraceThrowingLogRecord>(LogLevel::FINE);
  record.setThrown(&thrown);
  // The characters of the catalogue as the recorder shows them.
  const std::string shown = std::regex_replace(thrown.toString(), std::regex(R"(\\u([0-9a-f]{4}))"), "<$1>");
  EXPECT_EQ(callsFor(std::move(record)),
            Texts{"nativeMethodThrowing(p.q.ResourceBundle, 4660, getBundle(Native Method), " + shown + ")"});
  EXPECT_EQ(callsFor(named<TraceThrowingLogRecord>(LogLevel::FINE)),
            Texts{"nativeMethodThrowing(p.q.ResourceBundle, 4660, getBundle(Native Method), Unknown Throwable)"});
}

TEST_F(JavaTrace, AStaticMethodHasTheObjectZero) {
  auto record = named<TraceEntryLogRecord>(LogLevel::FINE);
  record.setObjectReference(nullptr);
  EXPECT_EQ(callsFor(std::move(record)),
            Texts{"nativeMethodEntry(p.q.ResourceBundle, 0, getBundle(Native Method), [])"});
}

TEST_F(JavaTrace, EventsAreIgnored) {
  EXPECT_EQ(callsFor(LogRecord(LogLevel::SEVERE, LogRecordType::EVENT, "an event")), Texts());
}

TEST_F(JavaTrace, TakesRecordsFromFinestUpUnlessToldOtherwise) {
  EXPECT_EQ(JavaTraceFileLogHandler(&env).getLogLevel(), LogLevel::FINEST);
  EXPECT_EQ(callsFor(named<TraceEntryLogRecord>(LogLevel::ALL)), Texts());
  EXPECT_EQ(callsFor(named<TraceEntryLogRecord>(LogLevel::FINE), LogLevel::CONFIG), Texts());
  EXPECT_EQ(callsFor(named<TraceEntryLogRecord>(LogLevel::ALL), LogLevel::ALL).size(), 1U);
}

TEST_F(JavaTrace, AnUnknownTypeIsCapturedAndDropped) {
  LogRecord record(LogLevel::FINE, static_cast<LogRecordType::LogRecordTypeValue>(77), "strange");
  name(record);
  std::ostringstream line;
  line << record;
  const Captures captures;
  EXPECT_EQ(callsFor(std::move(record)), Texts());
  EXPECT_EQ(captures.values("Class:"), Texts{"JavaTraceFileLogHandler"});
  EXPECT_EQ(captures.values("Method:"), Texts{"publish"});
  EXPECT_EQ(captures.values("Probe:"), Texts{"FFDC_010"});
  EXPECT_EQ(captures.values("Arg[0]:"), Texts{"unexpected record type"});
  EXPECT_EQ(captures.values("Arg[1]:"), Texts{" (type: 77)"});
  EXPECT_EQ(captures.values("Arg[2]:"), Texts{line.str()});
}

TEST_F(JavaTrace, EachMethodThatThrowsIsCapturedOnce) {
  JavaTraceFileLogHandler handler(&env);
  const auto publish = [&](LogRecord&& record) { handler.publish(record); };
  const Captures captures;
  for (int round = 0; round < 2; ++round) {
    calls::throwIn("nativeMethodEntry");
    publish(named<TraceEntryLogRecord>(LogLevel::FINE, {"a"}));
    calls::throwIn("nativeMethodExit");
    publish(named<TraceExitLogRecord>(LogLevel::FINE));
    publish(named<TraceExitLogRecord>(LogLevel::FINE, {"a"}));
    calls::throwIn("nativeMethodData");
    publish(named<TraceDataLogRecord>(LogLevel::FINE, {"a"}));
    calls::throwIn("nativeMethodThrowing");
    publish(named<TraceThrowingLogRecord>(LogLevel::FINE));
    EXPECT_FALSE(env.ExceptionCheck());
  }
  EXPECT_EQ(captures.records().size(), 5U);
  EXPECT_EQ(handler.getFailureCount(), 10U);
}

TEST_F(JavaTrace, APendingExceptionIsPendingAgainAfterwards) {
  env.ThrowNew(env.FindClass("java/io/IOException"), "mine");
  JavaTraceFileLogHandler handler(&env);
  auto record = named<TraceEntryLogRecord>(LogLevel::FINE, {"a"});
  handler.publish(record);
  EXPECT_EQ(takeException(env), "java.io.IOException: mine");
  EXPECT_EQ(calls::take().size(), 1U);
}

TEST_F(JavaTrace, AThreadThatJavaDoesNotKnowIsAttachedForTheCallOnly) {
  void* found = nullptr;
  jint state = JNI_OK;
  Texts seen;
  JavaTraceFileLogHandler handler(&env);
  std::thread([&] {
    auto record = named<TraceEntryLogRecord>(LogLevel::FINE);
    handler.publish(record);
    state = Jvm::instance().vm()->GetEnv(&found, JNI_VERSION_1_2);
  }).join();
  EXPECT_EQ(state, JNI_EDETACHED);
  EXPECT_EQ(calls::take().size(), 1U);
}

}  // namespace tessel::test
