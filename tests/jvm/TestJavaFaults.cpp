// Every function of Java's interface that the library calls made to fail: its first call, its second, and so on.
#include "jvm/Jvm.h"

#include <tessel/JavaEventLogHandler.h>
#include <tessel/JavaTraceFileLogHandler.h>
#include <tessel/TraceDataLogRecord.h>
#include <tessel/TraceEntryLogRecord.h>
#include <tessel/TraceExitLogRecord.h>
#include <tessel/TraceThrowingLogRecord.h>

#include "jvm/FailEach.h"
#include "jvm/JavaDiagnostics.h"
#include "jvm/NativeMethods.h"

namespace tessel::test {
namespace {

using Failure = JniShim::Failure;

using JavaFaults = JvmTest;

// With a handler of its own, so that nothing of one round is known in the next.
template <class Handler>
void publishAll(JNIEnv& env, const std::vector<LogRecord*>& records) {
  Handler handler(&env, LogLevel::ALL);
  for (LogRecord* record : records) {
    handler.publish(*record);
    EXPECT_FALSE(env.ExceptionCheck());
  }
}

}  // namespace

TEST_F(JavaFaults, OfTheEventHandlerLoseNoMoreThanRecords) {
  LogRecord info(LogLevel::INFO, LogRecordType::EVENT, "text");
  LogRecord unexpected(LogLevel::ALL, LogRecordType::EVENT, "text");
  const Names failed = failEach(env, [&] { publishAll<JavaEventLogHandler>(env, {&info, &unexpected}); });
  EXPECT_EQ(failed, (Names{"CallStaticVoidMethodA", "FindClass", "GetJavaVM", "GetStaticMethodID", "NewGlobalRef",
                           "NewStringUTF"}));
}

TEST_F(JavaFaults, OfTheTraceHandlerLoseNoMoreThanRecords) {
  std::string arguments[] = {"a", "b"};
  TraceEntryLogRecord entry(LogLevel::FINE, "");
  entry.setArguments(2, arguments);
  TraceExitLogRecord exit(LogLevel::FINE, "");
  TraceExitLogRecord exitWithReturn(LogLevel::FINE, "");
  exitWithReturn.setArguments(1, arguments);
  TraceDataLogRecord data(LogLevel::FINE, "");
  data.setArguments(2, arguments);
  TraceThrowingLogRecord throwing(LogLevel::FINE, "");
  LogRecord strange(LogLevel::FINE, static_cast<LogRecordType::LogRecordTypeValue>(77), "strange");
  const Names failed = failEach(env, [&] {
    publishAll<JavaTraceFileLogHandler>(env, {&entry, &exit, &exitWithReturn, &data, &throwing, &strange});
  });
  EXPECT_EQ(failed, (Names{"CallStaticVoidMethodA", "FindClass", "GetJavaVM", "GetStaticMethodID", "NewGlobalRef",
                           "NewObjectArray", "NewStringUTF", "SetObjectArrayElement"}));
}

TEST_F(JavaFaults, OfAHandlerWithAPendingExceptionLeaveThatOne) {
  LogRecord info(LogLevel::INFO, LogRecordType::EVENT, "text");
  failEach(env, [&] {
    JavaEventLogHandler handler(&env);
    const jclass clazz = env.FindClass("java/io/IOException");
    env.ThrowNew(clazz, "mine");
    handler.publish(info);
    EXPECT_EQ(takeException(env), "java.io.IOException: mine");
    env.DeleteLocalRef(clazz);
  });
}

TEST_F(JavaFaults, OfANativeMethodEndInAnExceptionOfJava) {
  const jstring path = env.NewStringUTF("C:\\f");
  const Names failed = failEach(env, [&] {
    native::chmod(env, path, 0);
    takeException(env);
  });
  EXPECT_EQ(failed, (Names{"FindClass", "GetStringUTFChars", "ThrowNew"}));
  env.DeleteLocalRef(path);
}

TEST_F(JavaFaults, OfTheExceptionsClassAreAnsweredWithTheNextOne) {
  const jstring path = env.NewStringUTF("C:\\f");
  const auto raised = [&](const std::string& function) {
    JniShim shim(env);
    shim.failOn(function, 1, Failure::withException);
    native::chmod(env, path, 0);
    const std::string exception = takeException(env);
    return exception.substr(0, exception.find(':'));
  };
  EXPECT_EQ(raised("FindClass"), "java.io.IOException");
  EXPECT_EQ(raised("ThrowNew"), "java.io.IOException");
  EXPECT_EQ(raised("GetStringUTFChars"), "java.lang.OutOfMemoryError");
  env.DeleteLocalRef(path);
}

TEST_F(JavaFaults, OfAnInitialisedProcessWithEverythingTracedNeverReachTheCaller) {
  const JavaDiagnostics diagnostics("=ALL");
  const jstring group = env.NewStringUTF("no such group");
  const Names failed = failEach(env, [&] {
    EXPECT_EQ(native::isCurrentUserMemberOfGroup(env, group), JNI_FALSE);
    takeException(env);
  });
  EXPECT_EQ(failed, (Names{"CallStaticVoidMethodA", "GetStringUTFChars", "NewObjectArray", "NewStringUTF",
                           "SetObjectArrayElement"}));
  env.DeleteLocalRef(group);
}

}  // namespace tessel::test
