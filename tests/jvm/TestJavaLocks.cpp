// Java code that takes records and meets the library's locks: on its own thread, and through threads that it waits for.
#include "jvm/Jvm.h"

#include <atomic>
#include <memory>
#include <thread>

#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/IPCMessage.h>
#include <tessel/NYXUtils.h>
#include <tessel/RasDescriptor.h>

#include "jvm/JavaDiagnostics.h"
#include "jvm/NativeMethods.h"
#include "support/CapturedOutput.h"
#include "support/EchoListener.h"
#include "support/PipePeers.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

const RasDescriptor rd("JavaLocks", "com.kelvo.tessel.nativ.common.KTBNVMessages");

using JavaLocks = JvmTest;

// The body runs during the first call only.
calls::During::Body once(std::function<void()> body) {
  auto done = std::make_shared<std::atomic<bool>>(false);
  return [done, body = std::move(body)](JNIEnv&) {
    if (!done->exchange(true)) body();
  };
}

// The body runs during calls on this thread only; a server's own threads trace as well.
calls::During::Body onThisThread(calls::During::Body body) {
  return [self = std::this_thread::get_id(), body = std::move(body)](JNIEnv& env) {
    if (std::this_thread::get_id() == self) body(env);
  };
}

// Runs the body on another thread and waits for its end, as Java code waits that needs a lock of that thread.
void onAnotherThread(const std::function<void()>& body) { std::thread(body).join(); }

std::string methods(const Texts& calls) {
  std::string names;
  for (const std::string& call : calls) names += call.substr(0, call.find('(')) + ' ';
  return names;
}

}  // namespace

TEST_F(JavaLocks, ALogHandlerMayCallNativeMethods) {
  const JavaDiagnostics diagnostics(kPrefix + ".NYXUtils=ALL");
  // Each native method has local references of its own.
  const calls::During during(once([&] {
    const jstring name = env.NewStringUTF("a");
    native::doesCurrentUserHaveSpecialAuthority(env, name);
    native::mkGroupWrite(env, name, name, JNI_TRUE);
    EXPECT_EQ(takeException(env), "java.io.IOException: NYXUtils::mkGroupWrite not implemented");
    native::rasSetLevel(env, env.NewStringUTF(("+" + kPrefix + ".FFDC=ALL").c_str()));
    EXPECT_EQ(takeException(env), "");
  }));
  const jstring name = env.NewStringUTF("a");
  native::doesCurrentUserHaveSpecialAuthority(env, name);
  EXPECT_EQ(takeException(env), "");
  // The points of the calls within are dropped, the event of the capture is not.
  EXPECT_EQ(methods(calls::take()), "nativeMethodEntry errorNoFormat nativeMethodExit ");
  env.DeleteLocalRef(name);
}

TEST_F(JavaLocks, ALogHandlerMaySwitchTraceOff) {
  const JavaDiagnostics diagnostics(kPrefix + ".NYXUtils=ALL");
  const calls::During during(once([&] { RAS::setLevel("=OFF"); }));
  NYXUtils::doesCurrentUserHaveSpecialAuthority("a");
  NYXUtils::doesCurrentUserHaveSpecialAuthority("a");
  EXPECT_EQ(methods(calls::take()), "nativeMethodEntry ");
}

TEST_F(JavaLocks, ALogHandlerMayWaitForAThreadThatTraces) {
  const JavaDiagnostics diagnostics(kPrefix + ".NYXUtils=ALL");
  const calls::During during(
      once([] { onAnotherThread([] { NYXUtils::doesCurrentUserHaveSpecialAuthority("other"); }); }));
  NYXUtils::doesCurrentUserHaveSpecialAuthority("mine");
  // The other thread's points are dropped: this one is tracing.
  EXPECT_EQ(methods(calls::take()), "nativeMethodEntry nativeMethodExit ");
}

TEST_F(JavaLocks, AThreadThatHadToDropAPointTracesAgainWhenItCan) {
  const JavaDiagnostics diagnostics(kPrefix + ".NYXUtils=ALL");
  const calls::During during(once([] {
    onAnotherThread([] {
      for (int i = 0; i < 100; ++i) NYXUtils::doesCurrentUserHaveSpecialAuthority("dropped");
    });
  }));
  NYXUtils::doesCurrentUserHaveSpecialAuthority("mine");
  onAnotherThread([] { NYXUtils::doesCurrentUserHaveSpecialAuthority("taken"); });
  const Texts seen = calls::take();
  ASSERT_EQ(methods(seen), "nativeMethodEntry nativeMethodExit nativeMethodEntry nativeMethodExit ");
  EXPECT_NE(seen[2].find("[taken]"), std::string::npos);
}

TEST_F(JavaLocks, ALogHandlerMayWaitForAThreadThatSetsTheLevel) {
  const JavaDiagnostics diagnostics(kPrefix + ".NYXUtils=ALL:" + kPrefix + ".RAS=ALL");
  const calls::During during(once([] { onAnotherThread([] { RAS::setLevel("=OFF"); }); }));
  NYXUtils::doesCurrentUserHaveSpecialAuthority("a");
  NYXUtils::doesCurrentUserHaveSpecialAuthority("a");
  EXPECT_EQ(methods(calls::take()), "nativeMethodEntry ");
}

TEST_F(JavaLocks, SettingTheLevelCallsNoJavaWhileItHoldsTheLock) {
  const JavaDiagnostics diagnostics(kPrefix + ".RAS=ALL");
  calls::take();
  const calls::During during([](JNIEnv&) { onAnotherThread([] { RAS::setDebugLevel(TraceLevel::OFF); }); });
  RAS::setLevel("+" + kPrefix + ".a," + kPrefix + ".b");
  EXPECT_EQ(methods(calls::take()), "nativeMethodEntry nativeMethodExit ");
}

TEST_F(JavaLocks, ALogHandlerMayWaitForAThreadThatCaptures) {
  const JavaDiagnostics diagnostics;
  std::string error;
  {
    CapturedOutput output(CapturedOutput::error);
    const calls::During during(
        once([] { onAnotherThread([] { FFDC::capture("Other", "m", FFDC::PROBE_001(), nullptr); }); }));
    FFDC::capture("Mine", "m", FFDC::PROBE_001(), nullptr);
    error = output.text();
  }
  EXPECT_EQ(JavaDiagnostics::captured("Class:"), Texts{"Mine"});
  EXPECT_NE(error.find("Class:      Other\n"), std::string::npos) << error;
  EXPECT_EQ(methods(calls::take()), "errorNoFormat ");
}

TEST_F(JavaLocks, ALogHandlerMayAskAServerOfItsOwnProcessWithEverythingTraced) {
  EchoListener listener;
  const TestServer server(listener);
  const JavaDiagnostics diagnostics("=ALL");
  std::string reply;
  const calls::During during(onThisThread(once([&] {
    TestClient client(server.name());
    reply = client.ask(7, "from a log handler").getMessageText();
  })));
  NYXUtils::doesCurrentUserHaveSpecialAuthority("a");
  EXPECT_EQ(reply, "from a log handler");
}

}  // namespace tessel::test
