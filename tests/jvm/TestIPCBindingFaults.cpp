// The native methods of clients and servers, and the listener between them, when Java's interface fails.
#include <atomic>

#include <windows.h>

#include <tessel/JavaCallbackIPCListener.h>

#include "jvm/ClosedMachine.h"
#include "jvm/FailEach.h"
#include "jvm/IPCBindings.h"
#include "jvm/JavaDiagnostics.h"
#include "support/EchoListener.h"
#include "support/ImportHook.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;
using Failure = JniShim::Failure;

const std::string kMadeUp = "java.lang.OutOfMemoryError: made up";

// Of the data records of a method, the text.
Texts takeData(const std::string& className, const std::string& method) {
  Texts texts;
  const std::string start = "nativeMethodData(" + kPrefix + "." + className + ", ";
  for (const std::string& call : calls::take()) {
    const std::size_t name = call.find(", " + method + "(Native Method), ");
    if (call.find(start) == 0 && name != std::string::npos) texts.push_back(call.substr(call.find('[', name)));
  }
  return texts;
}

class IPCBindingFaults : public IPCBindingsTest {
 protected:
  // Opens something with each allocation of this thread failing in turn, and ends it with memory to spare. Returns how
  // many failed.
  template <class Open, class Close>
  static unsigned failEachAllocation(const Open& open, const Close& close) {
    close(open());
    ImportHook<"malloc", void*(std::size_t)> hook;
    const DWORD self = GetCurrentThreadId();
    for (unsigned nth = 1;; ++nth) {
      SCOPED_TRACE(nth);
      std::atomic<unsigned> calls{0};
      hook.replaceWith([&](std::size_t size) -> void* {
        return GetCurrentThreadId() == self && ++calls == nth ? nullptr : hook.callOriginal(size);
      });
      const jlong handle = open();
      hook.passOn();
      close(handle);
      if (calls < nth) return nth - 1;
    }
  }

  const std::string name = uniqueService();
  const jstring service = string(name);
  const jstring any = string("C:\\any");
  const jstring file = string(properties());
};

using CallbackFaults = IPCBindingsTest;

// What the listener answers when the nth call of the function fails.
std::string answerWith(JNIEnv& env, const std::string& function, Failure failure) {
  const JavaAnswers answers(env, echo);
  JavaCallbackIPCListener listener(&env, answers.object());
  JniShim shim(env);
  shim.failOn(function, 1, failure);
  const std::string reply = shown(listener.onMessage(IPCMessage(7, "text")));
  EXPECT_TRUE(shim.hasFailed());
  EXPECT_EQ(shim.open().localReferences, 0);
  EXPECT_EQ(takeException(env), "");
  return reply;
}

// The environment of a machine that accepts no thread; it gives references that only have to be recognised.
struct ClosedEnv : JNIEnv_ {
  ClosedEnv() {
    functions = &table;
    table.GetJavaVM = [](JNIEnv*, JavaVM** vm) -> jint {
      static ClosedMachine machine;
      *vm = &machine;
      return JNI_OK;
    };
    table.GetObjectClass = [](JNIEnv*, jobject) { return reinterpret_cast<jclass>(0x10); };
    table.GetMethodID = [](JNIEnv*, jclass, const char*, const char*) { return reinterpret_cast<jmethodID>(0x20); };
    table.NewGlobalRef = [](JNIEnv*, jobject) { return reinterpret_cast<jobject>(0x30); };
    table.DeleteLocalRef = [](JNIEnv*, jobject) {};
  }

  JNINativeInterface_ table{};
};

}  // namespace

TEST_F(IPCBindingFaults, OfAClientThatConnectsGiveItOrAnException) {
  EchoListener listener;
  const TestServer server(listener, -1, name);
  const Names failed = failEach(env, [&] {
    const jlong client = native::openClient(env, service, any, file);
    EXPECT_EQ(takeException(env).empty(), client != 0);
    native::closeClient(env, client);
  });
  EXPECT_EQ(failed, Names{"GetStringUTFChars"});
}

TEST_F(IPCBindingFaults, OfAClientThatCannotConnectEndInAnException) {
  const Names failed = failEach(env, [&] {
    EXPECT_EQ(native::openClient(env, service, any, file), 0);
    EXPECT_NE(takeException(env), "");
  });
  EXPECT_EQ(failed, (Names{"FindClass", "GetStringUTFChars", "ThrowNew"}));
}

TEST_F(IPCBindingFaults, OfARequestNeverLeaveBothAReplyAndAnException) {
  EchoListener listener;
  const TestServer server(listener, -1, name);
  const jlong client = native::openClient(env, service, any, file);
  const jbyteArray request = newBytes(env, "text");
  const Names failed = failEach(env, [&] {
    const jbyteArray reply = native::sendMessage(env, request, client, request);
    EXPECT_EQ(takeException(env).empty(), reply != nullptr);
    if (!reply) return;
    JniShim::takeOver();
    env.DeleteLocalRef(reply);
  });
  EXPECT_EQ(failed, (Names{"GetByteArrayRegion", "NewByteArray", "SetByteArrayRegion"}));
  env.DeleteLocalRef(request);
  EXPECT_EQ(ask(client, "after"), "after");
  native::closeClient(env, client);
}

TEST_F(IPCBindingFaults, OfARequestThatCannotBeReadSendNothing) {
  EchoListener listener;
  const TestServer server(listener, -1, name);
  const jlong client = native::openClient(env, service, any, file);
  {
    JniShim shim(env);
    shim.failOn("GetByteArrayRegion", 1, Failure::withException);
    EXPECT_EQ(ask(client, "text"), kMadeUp);
  }
  EXPECT_EQ(listener.requests(), 0);
  native::closeClient(env, client);
}

TEST_F(IPCBindingFaults, OfAReplyThatCannotBeMadeAreExceptions) {
  EchoListener listener;
  const TestServer server(listener, -1, name);
  const jlong client = native::openClient(env, service, any, file);
  const auto asked = [&](const std::string& function, Failure failure) {
    JniShim shim(env);
    shim.failOn(function, 1, failure);
    return ask(client, "text");
  };
  EXPECT_EQ(asked("NewByteArray", Failure::withException), kMadeUp);
  EXPECT_EQ(asked("SetByteArrayRegion", Failure::withException), kMadeUp);
  EXPECT_EQ(asked("NewByteArray", Failure::silent), kIPCException + "NewByteArray failed");
  EXPECT_EQ(ask(client, "after"), "after");
  native::closeClient(env, client);
}

TEST_F(IPCBindingFaults, OfAServerGiveItOrAnExceptionAndNothingIsLeft) {
  const JavaAnswers answers(env, echo);
  const Names failed = failEach(env, [&] {
    const jlong server = native::openServer(env, answers.object(), service, any, any);
    EXPECT_EQ(takeException(env).empty(), server != 0);
    if (server) expectServes(name);
    native::closeServer(env, server);
    EXPECT_EQ(takeException(env), "");
  });
  EXPECT_EQ(failed, (Names{"GetJavaVM", "GetMethodID", "GetObjectClass", "GetStringUTFChars", "NewGlobalRef"}));
}

TEST_F(IPCBindingFaults, OfTheLookUpOfTheMethodAreReportedAsTheMissingMethod) {
  const JavaAnswers answers(env, echo);
  const std::string missing = kIPCException + shownMessage("KTBNV0069_UNKNOWN_JAVA_METHOD",
                                                           "byte [] com.kelvo.tessel.ipc.IPCServer.onMessage(byte [])");
  const auto thrown = [&](const std::string& function, Failure failure) {
    JniShim shim(env);
    shim.failOn(function, 1, failure);
    EXPECT_EQ(openServer(answers.object(), name), 0);
    return takeException(env);
  };
  for (const Failure failure : {Failure::withException, Failure::silent}) {
    EXPECT_EQ(thrown("GetMethodID", failure), missing);
    EXPECT_EQ(thrown("GetObjectClass", failure), missing);
  }
  EXPECT_EQ(thrown("NewGlobalRef", Failure::silent), kIPCException + "std::bad_alloc");
}

TEST_F(IPCBindingFaults, OfShutdownsOfNothingEndInAnException) {
  const Names failed = failEach(env, [&] {
    native::closeClient(env, 4711);
    EXPECT_NE(takeException(env), "");
    native::closeServer(env, 4711);
    EXPECT_NE(takeException(env), "");
  });
  EXPECT_EQ(failed, (Names{"FindClass", "ThrowNew"}));
}

TEST_F(IPCBindingFaults, OfTracedShutdownsNeverReachTheCaller) {
  const JavaDiagnostics diagnostics("=ALL");
  const Names failed = failEach(env, [&] {
    native::closeClient(env, 0);
    native::closeServer(env, 0);
    EXPECT_EQ(takeException(env), "");
  });
  EXPECT_EQ(failed, (Names{"CallStaticVoidMethodA", "NewObjectArray", "NewStringUTF", "SetObjectArrayElement"}));
}

TEST_F(IPCBindingFaults, OfTheMachineAreTracedWhereTheServerIsMade) {
  const JavaAnswers answers(env, echo);
  const JavaDiagnostics diagnostics("=ALL");
  {
    JniShim shim(env);
    shim.failOn("GetJavaVM", 1, Failure::silent);
    EXPECT_EQ(openServer(answers.object(), name), 0);
  }
  EXPECT_EQ(takeException(env), kIPCException + shownMessage("KTBNV0169_INVALID_JVM_POINTER"));
  EXPECT_EQ(takeData("JavaCallbackIPCListener", "JavaCallbackIPCListener"), Texts{"[GetJavaVM failed])"});
}

TEST_F(IPCBindingFaults, OfTheExceptionsClassAreAnsweredWithAMoreGeneralOne) {
  const auto thrownWithout = [&](const std::string& missing) {
    std::string thrown;
    Jvm::instance().inWorldWithout("com.kelvo.tessel.ipc." + missing, [&](JNIEnv& world) {
      const jstring nobody = world.NewStringUTF(name.c_str());
      const jstring empty = world.NewStringUTF(properties().c_str());
      EXPECT_EQ(native::openClient(world, nobody, nobody, empty), 0);
      thrown = takeException(world);
    });
    return thrown;
  };
  const std::string text = shownMessage("KTBNV0066_OPEN_ERROR", name, systemText(2));
  EXPECT_EQ(thrownWithout("IPCServer"), "com.kelvo.tessel.ipc.IPCNotFoundException: " + text);
  EXPECT_EQ(thrownWithout("IPCNotFoundException"), kIPCException + text);
  EXPECT_EQ(thrownWithout("IPCException"), "java.lang.RuntimeException: " + text);
}

TEST_F(IPCBindingFaults, OfMemoryAreExceptionsAndLeaveNobodyServing) {
  const JavaAnswers answers(env, echo);
  const unsigned failures = failEachAllocation(
      [&] {
        const jlong server = native::openServer(env, answers.object(), service, any, any);
        const bool thrown = !takeException(env).empty();
        EXPECT_NE(thrown, server != 0);
        return server;
      },
      [&](jlong server) {
        if (server) expectServes(name);
        native::closeServer(env, server);
        EXPECT_EQ(takeException(env), "");
      });
  EXPECT_GT(failures, 10U);
}

TEST_F(IPCBindingFaults, OfMemoryDuringARequestAreExceptions) {
  EchoListener listener;
  const TestServer server(listener, -1, name);
  const unsigned failures = failEachAllocation(
      [&] {
        const jlong client = native::openClient(env, service, any, file);
        const bool opened = client != 0;
        EXPECT_NE(takeException(env).empty(), !opened);
        if (opened) {
          const std::string reply = ask(client, std::string(100, 'x'));
          EXPECT_TRUE(reply == std::string(100, 'x') || reply.find("Exception: ") != std::string::npos) << reply;
        }
        return client;
      },
      [&](jlong client) {
        native::closeClient(env, client);
        EXPECT_EQ(takeException(env), "");
      });
  EXPECT_GT(failures, 10U);
}

TEST_F(CallbackFaults, AreAnswersAndLeaveNothing) {
  const JavaAnswers answers(env, echo);
  JavaCallbackIPCListener listener(&env, answers.object());
  const Names failed = failEach(env, [&] {
    EXPECT_EQ(listener.onMessage(IPCMessage(7, "text")).getMessageId(), 7);
    EXPECT_EQ(takeException(env), "");
  });
  EXPECT_EQ(failed, (Names{"CallObjectMethodV", "GetByteArrayRegion", "NewByteArray", "SetByteArrayRegion"}));
}

TEST_F(CallbackFaults, ThatJavaReportsAreAnExceptionOfTheObject) {
  const std::string thrown = shown(IPCMessage(7, 1, messageText("KTBNV0070_JAVA_EXCEPTION_THROWN")));
  for (const char* function : {"CallObjectMethodV", "GetByteArrayRegion", "NewByteArray", "SetByteArrayRegion"}) {
    EXPECT_EQ(answerWith(env, function, Failure::withException), thrown) << function;
  }
  EXPECT_EQ(answerWith(env, "NewByteArray", Failure::silent), thrown);
}

// The reply's text, on the thread that serves the client.
TEST_F(CallbackFaults, OfMemoryForAReplyAreAnswersAndTheServerGoesOn) {
  constexpr std::size_t kLength = 1001;
  const std::string name = uniqueService();
  const JavaAnswers answers(
      env, [](JNIEnv& threadsEnv, jbyteArray) { return newBytes(threadsEnv, std::string(kLength, 'a')); });
  const jlong server = native::openServer(env, answers.object(), string(name), string("C:\\any"), string(""));
  TestClient client(name);
  std::atomic<bool> refused{false};
  {
    ImportHook<"malloc", void*(std::size_t)> hook;
    hook.replaceWith([&](std::size_t size) -> void* {
      return size == kLength + 1 && !refused.exchange(true) ? nullptr : hook.callOriginal(size);
    });
    EXPECT_EQ(shown(client.ask(7, "first")), shown(IPCMessage(7, 1, messageText("KTBNV0070_JAVA_EXCEPTION_THROWN"))));
  }
  EXPECT_TRUE(refused);
  EXPECT_EQ(client.ask(8, "second").getMessageText(), std::string(kLength, 'a'));
  client->disconnect();
  native::closeServer(env, server);
}

TEST_F(CallbackFaults, OfAThreadThatTheMachineRefusesAreTracedAndAnswered) {
  const JavaDiagnostics diagnostics("=ALL");
  ClosedEnv closed;
  JavaCallbackIPCListener listener(&closed, nullptr);
  calls::take();
  EXPECT_EQ(shown(listener.onMessage(IPCMessage(7, "text"))),
            shown(IPCMessage(7, 1, messageText("KTBNV0170_ATTACH_CURRENT_THREAD_FAILED"))));
  EXPECT_EQ(takeData("JavaCallbackIPCListener", "onMessage"), Texts{"[JNI environment not available])"});
}

TEST_F(CallbackFaults, OfAnExceptionAreTraced) {
  const JavaAnswers answers(env, [](JNIEnv& threadsEnv, jbyteArray) -> jbyteArray {
    const jclass clazz = threadsEnv.FindClass("java/io/IOException");
    threadsEnv.ThrowNew(clazz, "mine");
    return nullptr;
  });
  JavaCallbackIPCListener listener(&env, answers.object());
  const JavaDiagnostics diagnostics("=ALL");
  calls::take();
  EXPECT_EQ(shown(listener.onMessage(IPCMessage(7, "text"))),
            shown(IPCMessage(7, 1, messageText("KTBNV0070_JAVA_EXCEPTION_THROWN"))));
  EXPECT_EQ(takeData("JavaCallbackIPCListener", "call"),
            Texts{"[Exception caught invoking Java callback. See system err for Java stack trace.])"});
  EXPECT_NE(calls::takeErrors().find("java.io.IOException: mine"), std::string::npos);
}

}  // namespace tessel::test
