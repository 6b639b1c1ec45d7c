// Events on their way into the Java class EventLog.
#include "jvm/Jvm.h"

#include <thread>
#include <utility>

#include <tessel/JavaEventLogHandler.h>
#include <tessel/LogRecord.h>

#include "jvm/ClosedMachine.h"
#include "support/Captures.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

class JavaEventLog : public JvmTest {
 protected:
  static LogRecord event(const LogLevel& level, const std::string& message) {
    LogRecord record(level, LogRecordType::EVENT, message);
    record.setSourceClassName("IPCServer");
    return record;
  }

  static void publish(JavaEventLogHandler& handler, const LogLevel& level, const std::string& message) {
    LogRecord record = event(level, message);
    handler.publish(record);
  }
};

}  // namespace

TEST_F(JavaEventLog, EachLevelGoesToItsMethod) {
  JavaEventLogHandler handler(&env);
  publish(handler, LogLevel::CONFIG, "configured");
  publish(handler, LogLevel::INFO, "started");
  publish(handler, LogLevel::WARNING, "slow");
  publish(handler, LogLevel::SEVERE, "failed");
  EXPECT_EQ(calls::take(), (Texts{"configNoFormat(IPCServer, configured)", "infoNoFormat(IPCServer, started)",
                                  "warningNoFormat(IPCServer, slow)", "errorNoFormat(IPCServer, failed)"}));
  EXPECT_EQ(handler.getFailureCount(), 0U);
}

TEST_F(JavaEventLog, TakesRecordsFromConfigUpUnlessToldOtherwise) {
  JavaEventLogHandler handler(&env);
  EXPECT_EQ(handler.getLogLevel(), LogLevel::CONFIG);
  publish(handler, LogLevel::FINE, "too fine");
  publish(handler, LogLevel::ALL, "finest of all");
  JavaEventLogHandler severe(&env, LogLevel::SEVERE);
  publish(severe, LogLevel::WARNING, "not severe");
  EXPECT_EQ(calls::take(), Texts());
}

TEST_F(JavaEventLog, AnUnexpectedLevelIsCapturedAndSentAsConfiguration) {
  JavaEventLogHandler handler(&env, LogLevel::ALL);
  LogRecord record = event(LogLevel::ALL, "everything");
  std::ostringstream line;
  line << record;
  const Captures captures;
  handler.publish(record);
  EXPECT_EQ(calls::take(), Texts{"configNoFormat(IPCServer, everything)"});
  EXPECT_EQ(captures.values("Class:"), Texts{"JavaEventLogHandler"});
  EXPECT_EQ(captures.values("Method:"), Texts{"publish"});
  EXPECT_EQ(captures.values("Probe:"), Texts{"FFDC_010"});
  EXPECT_EQ(captures.values("Cause:"), Texts{"null"});
  EXPECT_EQ(captures.values("Arg[0]:"), Texts{"unexpected log level"});
  EXPECT_EQ(captures.values("Arg[1]:"), Texts{LogLevel(LogLevel::ALL).toString()});
  EXPECT_EQ(captures.values("Arg[2]:"), Texts{line.str()});
}

TEST_F(JavaEventLog, TextsArriveAsCharacters) {
  JavaEventLogHandler handler(&env);
  publish(handler, LogLevel::INFO, "");
  publish(handler, LogLevel::INFO, "na\\u00efve \\ud83d\\ude00");
  publish(handler, LogLevel::INFO, "\xF0\x9F\x98\x80 \xE4\xB8\xAD");
  publish(handler, LogLevel::INFO, "\xFC");
  publish(handler, LogLevel::INFO, std::string("a\0b", 3));
  EXPECT_EQ(calls::take(), (Texts{"infoNoFormat(IPCServer, )", "infoNoFormat(IPCServer, na<00ef>ve <d83d><de00>)",
                                  "infoNoFormat(IPCServer, <d83d><de00> <4e2d>)", "infoNoFormat(IPCServer, <00fc>)",
                                  "infoNoFormat(IPCServer, a<0000>b)"}));
}

TEST_F(JavaEventLog, AMethodThatThrowsIsDescribedClearedAndCapturedOnce) {
  JavaEventLogHandler handler(&env);
  const Captures captures;
  calls::throwIn("infoNoFormat");
  publish(handler, LogLevel::INFO, "first");
  EXPECT_FALSE(env.ExceptionCheck());
  EXPECT_EQ(calls::takeErrors().find("java.lang.IllegalStateException: thrown by infoNoFormat"), 0U);
  publish(handler, LogLevel::INFO, "second");
  EXPECT_EQ(calls::takeErrors().find("java.lang.IllegalStateException: thrown by infoNoFormat"), 0U);
  EXPECT_EQ(handler.getFailureCount(), 2U);
  EXPECT_EQ(captures.values("Arg[0]:"), Texts{"calling Java method failed with an exception"});
  EXPECT_EQ(captures.values("Arg[1]:"), Texts{"Exception traceback written to stderr"});
  ASSERT_EQ(captures.values("Arg[2]:").size(), 1U);
  EXPECT_NE(captures.values("Arg[2]:")[0].find("I first"), std::string::npos) << captures.values("Arg[2]:")[0];
  EXPECT_EQ(captures.values("Probe:"), Texts{"FFDC_011"});

  calls::throwIn("warningNoFormat");
  publish(handler, LogLevel::INFO, "good again");
  publish(handler, LogLevel::WARNING, "the first of another method");
  EXPECT_EQ(handler.getFailureCount(), 3U);
  EXPECT_EQ(captures.records().size(), 2U);
}

TEST_F(JavaEventLog, APendingExceptionIsPendingAgainAfterwards) {
  JavaEventLogHandler handler(&env);
  env.ThrowNew(env.FindClass("java/io/IOException"), "mine");
  publish(handler, LogLevel::INFO, "meanwhile");
  EXPECT_EQ(takeException(env), "java.io.IOException: mine");
  EXPECT_EQ(calls::take(), Texts{"infoNoFormat(IPCServer, meanwhile)"});

  const Captures captures;
  calls::throwIn("infoNoFormat");
  env.ThrowNew(env.FindClass("java/io/IOException"), "mine");
  publish(handler, LogLevel::INFO, "failing");
  EXPECT_EQ(captures.records().size(), 1U);
  EXPECT_EQ(takeException(env), "java.io.IOException: mine");
}

TEST_F(JavaEventLog, AHandlerCanBeMadeWhileAnExceptionIsPending) {
  env.ThrowNew(env.FindClass("java/io/IOException"), "mine");
  JavaEventLogHandler handler(&env);
  EXPECT_EQ(takeException(env), "java.io.IOException: mine");
  publish(handler, LogLevel::INFO, "works");
  EXPECT_EQ(calls::take(), Texts{"infoNoFormat(IPCServer, works)"});
}

TEST_F(JavaEventLog, AThreadThatJavaDoesNotKnowIsAttachedForTheCallOnly) {
  JavaEventLogHandler handler(&env);
  void* found = &handler;
  jint state = JNI_OK;
  std::thread([&] {
    publish(handler, LogLevel::INFO, "from outside");
    state = Jvm::instance().vm()->GetEnv(&found, JNI_VERSION_1_2);
  }).join();
  EXPECT_EQ(state, JNI_EDETACHED);
  EXPECT_EQ(calls::take(), Texts{"infoNoFormat(IPCServer, from outside)"});
}

TEST_F(JavaEventLog, WithoutAnEnvironmentTheHandlerForwardsNothing) {
  const Captures captures;
  JavaEventLogHandler handler(nullptr);
  publish(handler, LogLevel::SEVERE, "lost");
  EXPECT_EQ(captures.values("Method:"), Texts{"JavaEventLogHandler"});
  EXPECT_EQ(captures.values("Arg[0]:"), Texts{"JNI environment not available"});
  EXPECT_EQ(calls::take(), Texts());
}

TEST_F(JavaEventLog, AMachineThatAcceptsNoThreadIsCapturedOnce) {
  static ClosedMachine machine;
  JNINativeInterface_ table = *env.functions;
  table.GetJavaVM = [](JNIEnv*, JavaVM** vm) -> jint {
    *vm = &machine;
    return JNI_OK;
  };
  const Captures captures;
  {
    const JNINativeInterface_* const original = std::exchange(env.functions, &table);
    JavaEventLogHandler handler(&env);
    env.functions = original;
    publish(handler, LogLevel::SEVERE, "lost");
    publish(handler, LogLevel::SEVERE, "lost");
  }
  EXPECT_EQ(calls::take(), Texts());
  EXPECT_EQ(captures.values("Method:"), Texts{"publish"});
  EXPECT_EQ(captures.values("Probe:"), Texts{"FFDC_009"});
  EXPECT_EQ(captures.values("Cause:"),
            Texts{"class NYXException: " + messageText("KTBNV0170_ATTACH_CURRENT_THREAD_FAILED")});
  EXPECT_EQ(captures.values("Arg[0]:"), Texts{"JNI environment not available"});
}

}  // namespace tessel::test
