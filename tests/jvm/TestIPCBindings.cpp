// The native methods for clients and servers: replies by status, exceptions, arguments, trace.
#include <windows.h>

#include <atomic>
#include <future>

#include <tessel/IPCNotAvailableForUserException.h>
#include <tessel/IPCNotFoundException.h>

#include "jvm/IPCBindings.h"
#include "jvm/JavaDiagnostics.h"
#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/FreshProcess.h"
#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;
using std::string_literals::operator""s;

const std::string kClientClass = "com.kelvo.tessel.ipc.IPCClient";
const std::string kServerClass = "com.kelvo.tessel.ipc.IPCServer";

// Answers every request with the same status and text.
class FixedListener : public IPCListener {
 public:
  FixedListener(long status, std::string text) : status_(status), text_(std::move(text)) {}
  IPCMessage onMessage(const IPCMessage& request) override { return {request.getMessageId(), status_, text_}; }

 private:
  const long status_;
  const std::string text_;
};

// Each with trace off and with everything traced into Java.
class IPCBindings : public IPCBindingsTest, public testing::WithParamInterface<bool> {
 protected:
  // What Java gets when the server's answer has this status and text.
  std::string replyTo(long status, const std::string& text) {
    FixedListener listener(status, text);
    const TestServer server(listener);
    const jlong client = openClient(server.name());
    std::string reply = ask(client, "any");
    native::closeClient(env, client);
    EXPECT_EQ(takeException(env), "");
    return reply;
  }

  // The exception of a client or a server that does not come about.
  template <class Open>
  std::string refused(const Open& open) {
    EXPECT_EQ(open(), 0);
    return takeException(env);
  }

  const JavaDiagnostics diagnostics{GetParam() ? "=ALL" : ""};
};

using IPCBindingsTrace = IPCBindingsTest;

INSTANTIATE_TEST_SUITE_P(Trace, IPCBindings, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "All" : "Off"; });

// The calls of one class and method, without their addresses.
Texts tracedAs(const std::string& className, const std::string& method) {
  Texts found;
  for (const std::string& call : calls::take()) {
    const std::string kind = call.substr(0, call.find('('));
    const bool isOfClass = call.find("(" + className + ", ") != std::string::npos;
    const std::size_t name = call.find(method + "(Native Method)");
    if (isOfClass && name != std::string::npos) {
      const std::string rest = call.substr(name + method.size() + std::string("(Native Method)").size());
      found.push_back(kind + (kind == "nativeMethodExit" ? "" : rest));
    }
  }
  return found;
}

}  // namespace

TEST_P(IPCBindings, AReplyIsItsTextUpToTheFirstZeroByteWhateverHarmlessStatusItHas) {
  EXPECT_EQ(replyTo(0, "text"), "text");
  EXPECT_EQ(replyTo(0, ""), "");
  EXPECT_EQ(replyTo(0, "te\0xt"s), "te");
  EXPECT_EQ(replyTo(0, "\0text"s), "");
  EXPECT_EQ(replyTo(3, "war\0ning"s), "war");
  EXPECT_EQ(replyTo(-1, "strange"), "strange");
  EXPECT_EQ(replyTo(0, std::string(5000, 'x')), std::string(1024, 'x'));
}

TEST_P(IPCBindings, AReplyOfStatusTwoIsATimeOut) {
  EXPECT_EQ(replyTo(2, "late"), "com.kelvo.tessel.ipc.IPCTimeoutException: late");
}

TEST_P(IPCBindings, AReplyOfStatusOneIsAnException) {
  EXPECT_EQ(replyTo(1, "boom"), kIPCException + "boom");
  EXPECT_EQ(replyTo(1, "bo\0om"s), kIPCException + "bo\xC0\x80om");
}

TEST_P(IPCBindings, TheTextOfAnExceptionIsValidForJavaWhateverTheServerSent) {
  EXPECT_EQ(replyTo(1, "\xFC"), kIPCException + "\xC3\xBC");
  EXPECT_EQ(replyTo(1, "\\u00fc"), kIPCException + "\xC3\xBC");
}

TEST_P(IPCBindings, ARequestGoesOutWithTheLowHalfOfTheSecondArgumentAsItsId) {
  const std::string name = uniqueService();
  RawServer raw(name);
  std::future<std::string> received = std::async(std::launch::async, [&] {
    raw.accept();
    std::string bytes = raw.read();
    raw.write(wireMessage(99, 0, "whatever id"));
    return bytes;
  });
  const jlong client = openClient(name);
  const jbyteArray request = newBytes(env, "te\0xt"s);
  EXPECT_EQ(takeBytes(env, native::sendMessage(env, request, client, request)), "whatever id");
  const auto id = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(request));
  EXPECT_EQ(received.get(), wireMessage(id, 0, "te\0xt"s));
  native::closeClient(env, client);
  env.DeleteLocalRef(request);
}

TEST_P(IPCBindings, ARequestIsCutAt1024Bytes) {
  EchoListener listener;
  const TestServer server(listener);
  const jlong client = openClient(server.name());
  EXPECT_EQ(ask(client, std::string(1025, 'x')), std::string(1024, 'x'));
  native::closeClient(env, client);
}

TEST_P(IPCBindings, AServerThatLeavesWhileItsReplyIsAwaitedGivesAnEmptyReply) {
  const std::string name = uniqueService();
  RawServer raw(name);
  std::future<void> received = std::async(std::launch::async, [&] {
    raw.accept();
    raw.read();
  });
  const jlong client = openClient(name);
  ImportHook<"GetOverlappedResult", decltype(GetOverlappedResult)> hook;
  hook.replaceWith([&](auto... arguments) {  // the read is pending
    if (received.valid()) received.get();
    raw.close();
    return hook.callOriginal(arguments...);
  });
  EXPECT_EQ(ask(client, "any"), "");
  EXPECT_EQ(ask(client, "again").find(kIPCException + "KTBNV0063E"), 0U);
  native::closeClient(env, client);
}

TEST_P(IPCBindings, ANullRequestIsNamed) {
  EchoListener listener;
  const TestServer server(listener);
  const jlong client = openClient(server.name());
  EXPECT_EQ(native::sendMessage(env, nullptr, client, nullptr), nullptr);
  EXPECT_EQ(takeException(env), "java.lang.NullPointerException: request");
  EXPECT_EQ(ask(client, "a"), "a");
  native::closeClient(env, client);
}

TEST_P(IPCBindings, AServiceThatNobodyServesIsNotFound) {
  const std::string name = uniqueService();
  EXPECT_EQ(refused([&] { return openClient(name); }),
            "com.kelvo.tessel.ipc.IPCNotFoundException: " + shownMessage("KTBNV0066_OPEN_ERROR", name, systemText(2)));
}

TEST_P(IPCBindings, APipeThatExcludesTheUserIsAnException) {
  ImportHook<"CreateFileA", decltype(CreateFileA)> hook;
  hook.replaceWith([&](const char* path, DWORD access, auto... rest) {
    if (std::string(path).find("\\\\.\\pipe\\") != 0) return hook.callOriginal(path, access, rest...);
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
  });
  EXPECT_EQ(refused([&] { return openClient("any"); }),
            kIPCException + shownMessage("KTBNV0177_NOT_AUTHORIZED", "any", systemText(5)));
}

TEST_P(IPCBindings, EachNativeExceptionOfAConnectionHasItsJavaClass) {
  ImportHook<"WaitNamedPipeA", decltype(WaitNamedPipeA)> wait;
  ImportHook<"CreateFileA", decltype(CreateFileA)> open;
  std::function<void()> thrower;
  open.replaceWith([&](const char* path, DWORD access, auto... rest) {
    if (std::string(path).find("\\\\.\\pipe\\") != 0) return open.callOriginal(path, access, rest...);
    SetLastError(ERROR_PIPE_BUSY);
    return INVALID_HANDLE_VALUE;
  });
  wait.replaceWith([&](const char*, DWORD) -> BOOL {
    thrower();
    return FALSE;
  });
  const auto raisedBy = [&](std::function<void()> body) {
    thrower = std::move(body);
    return refused([&] { return openClient("any"); });
  };
  EXPECT_EQ(raisedBy([] { throw IPCNotAvailableForUserException("text"); }),
            "com.kelvo.tessel.ipc.IPCNotAvailableForUserException: text");
  EXPECT_EQ(raisedBy([] { throw IPCNotFoundException("text"); }), "com.kelvo.tessel.ipc.IPCNotFoundException: text");
  EXPECT_EQ(raisedBy([] { throw NYXException("text"); }), kIPCException + "text");
  EXPECT_EQ(raisedBy([] { throw std::runtime_error("text"); }), kIPCException + "text");
  EXPECT_EQ(raisedBy([] { throw 1; }), kIPCException + "unknown native exception");
}

TEST_P(IPCBindings, AMissingPropertiesFileIsAnExceptionAlsoWhereTheServiceIsServed) {
  EchoListener listener;
  const TestServer server(listener);
  const std::string file = "C:\\no such folder\\client.properties";
  const std::string thrown =
      refused([&] { return native::openClient(env, string(server.name()), string(folder()), string(file)); });
  EXPECT_EQ(thrown.find(kIPCException), 0U) << thrown;
  EXPECT_NE(thrown.find(file), std::string::npos) << thrown;
}

TEST_P(IPCBindings, ANullStringIsAnExceptionWithTheNameOfTheArgument) {
  const jstring any = string("any");
  const jstring file = string(properties());
  const JavaAnswers answers(env, echo);
  EXPECT_EQ(refused([&] { return native::openClient(env, nullptr, any, file); }), kIPCException + "serviceName");
  EXPECT_EQ(refused([&] { return native::openClient(env, any, nullptr, file); }), kIPCException + "directory");
  EXPECT_EQ(refused([&] { return native::openClient(env, any, any, nullptr); }), kIPCException + "propertiesFile");
  const jobject object = answers.object();
  EXPECT_EQ(refused([&] { return native::openServer(env, object, nullptr, any, any); }), kIPCException + "serviceName");
  EXPECT_EQ(refused([&] { return native::openServer(env, object, any, nullptr, any); }), kIPCException + "directory");
  EXPECT_EQ(refused([&] { return native::openServer(env, object, any, any, nullptr); }), kIPCException + "adminGroup");
}

TEST_P(IPCBindings, ANameThatTheCodePageLacksIsAnException) {
  const std::string name = "C:\\\xE4\xB8\xAD";
  const jstring any = string("any");
  const JavaAnswers answers(env, echo);
  const std::string expected = kIPCException + shownMessage("KTBNV0178_NOT_IN_CODE_PAGE", name);
  EXPECT_EQ(refused([&] { return native::openClient(env, any, string(name), string(properties())); }), expected);
  EXPECT_EQ(refused([&] { return native::openClient(env, any, any, string(name)); }), expected);
  EXPECT_EQ(refused([&] { return native::openServer(env, answers.object(), any, string(name), any); }), expected);
  EXPECT_EQ(refused([&] { return native::openServer(env, answers.object(), any, any, string(name)); }), expected);
}

TEST_P(IPCBindings, AnObjectWithoutTheMethodIsRefusedAndNothingIsLeft) {
  const std::string name = uniqueService();
  const jstring object = string("an object of another class");
  const auto open = [&] { return refused([&] { return openServer(object, name); }); };
  open();
  const HandleBaseline handles;
  const std::string thrown = open();
  EXPECT_EQ(handles.growth(), 0);
  EXPECT_EQ(thrown, kIPCException + shownMessage("KTBNV0069_UNKNOWN_JAVA_METHOD",
                                                 "byte [] com.kelvo.tessel.ipc.IPCServer.onMessage(byte [])"));
  EXPECT_EQ(refused([&] { return openClient(name); }).find("com.kelvo.tessel.ipc.IPCNotFoundException: "), 0U);
}

TEST_P(IPCBindings, ANameThatCannotBeServedIsAnException) {
  const JavaAnswers answers(env, echo);
  const std::string thrown = refused([&] { return openServer(answers.object(), std::string(300, 'x')); });
  EXPECT_EQ(thrown.find(kIPCException + "KTBNV00"), 0U) << thrown;
}

TEST_P(IPCBindings, AServerWithALimitOfOneDropsTheSecondClientAndReportsIt) {
  const JavaAnswers answers(env, echo);
  const std::string name = uniqueService();
  const EventRecorder recorder;
  const jlong server = openServer(answers.object(), name, 1);
  const jlong first = openClient(name);
  EXPECT_EQ(ask(first, "a"), "a");
  {
    RawClient second(name);
    EXPECT_TRUE(second.isOpen());
    EXPECT_EQ(second.read(), "");
    EXPECT_EQ(second.error(), static_cast<DWORD>(ERROR_PIPE_NOT_CONNECTED));
  }
  EXPECT_EQ(ask(first, "b"), "b");
  native::closeClient(env, first);
  native::closeServer(env, server);
  EXPECT_EQ(takeException(env), "");
  EXPECT_EQ(recorder.errors(), Texts{messageText("KTBNV0090_MAX_CONNECTIONS_EXCEEDED", name, "1")});
}

TEST_P(IPCBindings, AServerWithALimitOfTwoDropsOnlyTheThirdClient) {
  const JavaAnswers answers(env, echo);
  const std::string name = uniqueService();
  const EventRecorder recorder;
  const jlong server = openServer(answers.object(), name, 2);
  const jlong first = openClient(name);
  const jlong second = openClient(name);
  EXPECT_EQ(ask(first, "a"), "a");
  EXPECT_EQ(ask(second, "b"), "b");
  {
    RawClient third(name);
    EXPECT_EQ(third.read(), "");
  }
  for (const jlong client : {first, second}) native::closeClient(env, client);
  native::closeServer(env, server);
  EXPECT_EQ(takeException(env), "");
  EXPECT_EQ(recorder.errors(), Texts{messageText("KTBNV0090_MAX_CONNECTIONS_EXCEEDED", name, "2")});
}

TEST_P(IPCBindings, APendingExceptionStays) {
  const jclass clazz = env.FindClass("java/io/IOException");
  env.ThrowNew(clazz, "mine");
  native::closeClient(env, 4711);
  EXPECT_EQ(takeException(env), "java.io.IOException: mine");
  env.DeleteLocalRef(clazz);
}

TEST_P(IPCBindings, NoHandleIsClosedWithATraceTextOnly) {
  const Texts traced{"nativeMethodEntry, [])", "nativeMethodData, [shutdown passed NULL nativeId, ignoring])",
                     "nativeMethodExit"};
  native::closeClient(env, 0);
  EXPECT_EQ(takeException(env), "");
  EXPECT_EQ(tracedAs(kClientClass, "shutdown"), GetParam() ? traced : Texts());
  native::closeServer(env, 0);
  EXPECT_EQ(takeException(env), "");
  EXPECT_EQ(tracedAs(kServerClass, "shutdown"), GetParam() ? traced : Texts());
}

TEST_P(IPCBindings, AFailureIsTracedAsThrown) {
  native::closeServer(env, 4711);
  EXPECT_EQ(takeException(env), kIPCException + "the native handle is not that of an open object");
  const Texts traced = tracedAs(kServerClass, "shutdown");
  if (!GetParam()) {
    EXPECT_EQ(traced, Texts());
  } else {
    ASSERT_EQ(traced.size(), 3U);
    EXPECT_EQ(traced[0], "nativeMethodEntry, [])");
    EXPECT_EQ(traced[1].find("nativeMethodThrowing, "), 0U) << traced[1];
    EXPECT_EQ(traced[2], "nativeMethodExit");
  }
}

TEST_F(IPCBindingsTrace, IsReachedByTheWholePrefixOnly) {
  const JavaDiagnostics diagnostics;
  const auto tracedWith = [&](const std::string& specification) {
    RAS::setLevel(specification);
    calls::take();
    native::closeClient(env, 0);
    return tracedAs(kClientClass, "shutdown").size();
  };
  EXPECT_EQ(tracedWith(kPrefix + "=FLOW"), 2U);
  EXPECT_EQ(tracedWith("=FLOW"), 2U);
  EXPECT_EQ(tracedWith(kClientClass + "=FLOW"), 0U);
  EXPECT_EQ(tracedWith(kPrefix + ".IPCClient=FLOW"), 0U);
}

TEST_F(IPCBindingsTrace, ShowsThatTheIntervalOfARequestIsThatOfJava) {
  const JavaDiagnostics diagnostics(kPrefix + ".IPCClientImpl=MODERATE");
  EchoListener listener;
  const TestServer server(listener);
  const jlong client = openClient(server.name());
  const jbyteArray request = newBytes(env, "x");
  // The entry and the first data point, since the ones that follow depend on when the reply comes.
  const auto tracedWith = [&](jint interval) {
    calls::take();
    EXPECT_EQ(takeBytes(env, native::sendMessage(env, nullptr, client, request, interval)), "x");
    Texts traced = tracedAs(kPrefix + ".IPCClientImpl", "sendMessage");
    traced.resize(2);
    return traced;
  };
  const std::string entry = "nativeMethodEntry, [IPCMessage id:0 status:0 text :x, ";
  const std::string used = "nativeMethodData, [Timeout changed to , ";
  EXPECT_EQ(tracedWith(250), (Texts{entry + "250])", used + "250])"}));
  EXPECT_EQ(tracedWith(1), (Texts{entry + "1])", used + "1])"}));
  EXPECT_EQ(tracedWith(-1), (Texts{entry + "-1])", used + "1])"}));
  EXPECT_EQ(tracedWith(-7), (Texts{entry + "-7])", used + "1])"}));
  env.DeleteLocalRef(request);
  native::closeClient(env, client);
}

TEST(IPCBindingsLogDirectory, IsThatOfTheFirstCallerInTheProcess) {
  inFreshProcess([] {
    JNIEnv& env = Jvm::instance().env();
    const auto open = [&](const char* directory) {
      const jstring any = env.NewStringUTF("any");
      native::openClient(env, any, env.NewStringUTF(directory), any);
      EXPECT_NE(takeException(env), "");
    };
    open("C:\\first");
    EXPECT_EQ(NYXEnvironment::getProperty("com.kelvo.tessel.native.logdir"), "C:\\first/logs");
    open("C:\\second");
    EXPECT_EQ(NYXEnvironment::getProperty("com.kelvo.tessel.native.logdir"), "C:\\first/logs");
  });
}

}  // namespace tessel::test
