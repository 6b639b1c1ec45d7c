// Every function of Java's interface that the library calls made to fail: its first call, its second, and so on.
#include "jvm/Jvm.h"

#include <initializer_list>
#include <memory>

#include <tessel/JavaEventLogHandler.h>
#include <tessel/JavaTraceFileLogHandler.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>
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
using Texts = std::vector<std::string>;

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

// What a handler captures when it is made.
struct Missing {
  std::string text;
  std::string probe;
};

const Missing kNoMachine{"GetJavaVM failed", "FFDC_001"};
const Missing kNoString{"java.lang.String class not available", "FFDC_002"};

// A handler that is made while the first call of the function fails.
template <class Handler>
std::unique_ptr<Handler> handlerWithout(JNIEnv& env, const std::string& function,
                                        Failure failure = Failure::withException) {
  JniShim shim(env);
  shim.failOn(function, 1, failure);
  auto handler = std::make_unique<Handler>(&env);
  EXPECT_TRUE(shim.hasFailed());
  EXPECT_FALSE(env.ExceptionCheck());
  return handler;
}

template <class Handler>
void expectCapture(JNIEnv& env, const std::string& name, const std::string& function, const Missing& missing) {
  for (const Failure failure : {Failure::withException, Failure::silent}) {
    SCOPED_TRACE(name + " " + function + (failure == Failure::silent ? " silent" : ""));
    const Captures captures;
    handlerWithout<Handler>(env, function, failure);
    EXPECT_EQ(captures.values("Class:"), Texts{name});
    EXPECT_EQ(captures.values("Method:"), Texts{name});
    EXPECT_EQ(captures.values("Probe:"), Texts{missing.probe});
    EXPECT_EQ(captures.values("Cause:"), Texts{"null"});
    EXPECT_EQ(captures.values("Arg[0]:"), Texts{missing.text});
  }
}

// An event, an entry, which goes with an array of its arguments, and an exit, which goes without.
void publishRecords(JavaEventLogHandler& events, JavaTraceFileLogHandler& trace) {
  LogRecord event(LogLevel::INFO, LogRecordType::EVENT, "text");
  TraceEntryLogRecord entry(LogLevel::FINE, "");
  TraceExitLogRecord exit(LogLevel::FINE, "");
  for (LogRecord* record : std::initializer_list<LogRecord*>{&event, &entry, &exit}) {
    record->setSourceClassName("C");
    record->setSourceMethodName("m");
  }
  events.publish(event);
  trace.publish(entry);
  trace.publish(exit);
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

TEST_F(JavaFaults, OfTheMachineAreCapturedByTheHandlers) {
  expectCapture<JavaEventLogHandler>(env, "JavaEventLogHandler", "GetJavaVM", kNoMachine);
  expectCapture<JavaTraceFileLogHandler>(env, "JavaTraceFileLogHandler", "GetJavaVM", kNoMachine);
}

TEST_F(JavaFaults, OfTheClassOfTextsAreCapturedByTheHandlers) {
  for (const char* function : {"FindClass", "NewGlobalRef"}) {
    expectCapture<JavaEventLogHandler>(env, "JavaEventLogHandler", function, kNoString);
    expectCapture<JavaTraceFileLogHandler>(env, "JavaTraceFileLogHandler", function, kNoString);
  }
}

TEST_F(JavaFaults, OfTheMachineLoseEveryRecord) {
  const Captures captures;
  const auto events = handlerWithout<JavaEventLogHandler>(env, "GetJavaVM");
  const auto trace = handlerWithout<JavaTraceFileLogHandler>(env, "GetJavaVM");
  publishRecords(*events, *trace);
  EXPECT_EQ(calls::take(), Texts());
  EXPECT_EQ(captures.values("Arg[0]:"), (Texts{"GetJavaVM failed", "GetJavaVM failed"}));
}

TEST_F(JavaFaults, OfTheClassOfTextsLoseRecordsWithArgumentsOnly) {
  const Captures captures;
  const auto events = handlerWithout<JavaEventLogHandler>(env, "FindClass");
  const auto trace = handlerWithout<JavaTraceFileLogHandler>(env, "FindClass");
  publishRecords(*events, *trace);
  EXPECT_EQ(calls::take(), (Texts{"infoNoFormat(C, text)", "nativeMethodExit(C, 0, m(Native Method))"}));
  EXPECT_EQ(captures.values("Arg[0]:"),
            (Texts{"java.lang.String class not available", "java.lang.String class not available",
                   "calling Java method failed with an exception"}));
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

TEST_F(JavaFaults, OfTheInitialisationLeaveItOrAnException) {
  const jstring directory = env.NewStringUTF(logDirectory().string().c_str());
  const jstring prefix = env.NewStringUTF(kPrefix.c_str());
  const Names failed = failEach(env, [&] {
    native::rasInitialize(env, directory, prefix);
    EXPECT_EQ(takeException(env).empty(), RAS::getEnvironment() == RASEnvironment::JAVA_APP);
    RAS::shutdown();
  });
  EXPECT_EQ(failed, (Names{"FindClass", "GetJavaVM", "GetStaticMethodID", "GetStringUTFChars", "NewGlobalRef"}));
  env.DeleteLocalRef(directory);
  env.DeleteLocalRef(prefix);
}

TEST_F(JavaFaults, OfAnInitialisationWithoutADirectoryEndInAnException) {
  const jstring prefix = env.NewStringUTF(kPrefix.c_str());
  const Names failed = failEach(env, [&] {
    native::rasInitialize(env, nullptr, prefix);
    EXPECT_NE(takeException(env), "");
    EXPECT_EQ(RAS::getEnvironment(), RASEnvironment::UNSPECIFIED);
  });
  EXPECT_EQ(failed, (Names{"FindClass", "ThrowNew"}));
  env.DeleteLocalRef(prefix);
}

// Trace is switched on by a call that is not traced, and off by one that is.
TEST_F(JavaFaults, OfSettingTheLevelLeaveItOrAnException) {
  const JavaDiagnostics diagnostics("=OFF");
  const jstring on = env.NewStringUTF((kPrefix + ".NativeJNI=ALL").c_str());
  const jstring off = env.NewStringUTF("=OFF");
  const RasDescriptor rd("NativeJNI", "B");
  const Names failed = failEach(env, [&] {
    native::rasSetLevel(env, on);
    EXPECT_EQ(takeException(env).empty(), rd.isFlowOn());
    native::rasSetLevel(env, off);
    EXPECT_EQ(takeException(env).empty(), !rd.isFlowOn());
    RAS::setLevel("=OFF");
  });
  EXPECT_EQ(failed, (Names{"CallStaticVoidMethodA", "GetStringUTFChars", "NewObjectArray", "NewStringUTF"}));
  env.DeleteLocalRef(on);
  env.DeleteLocalRef(off);
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
