// What Java holds: native objects by number, their beginning and their end.
#include <atomic>
#include <deque>
#include <functional>
#include <future>
#include <thread>
#include <utility>

#include <windows.h>

#include <tessel/LogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>
#include <tessel/RAS.h>

#include "jvm/IPCBindings.h"
#include "jvm/JavaDiagnostics.h"
#include "support/EchoListener.h"
#include "support/Handles.h"
#include "support/RawPipe.h"
#include "support/Thrown.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

using std::string_literals::operator""s;

constexpr long kHandlesOfAServer = 2;  // the events of the monitors of its listener thread: each stays open
constexpr long kHandlesOfAWorker = 2;  // those of the worker and of its thread
const std::string kNotOpen = kIPCException + "the native handle is not that of an open object";

// Each with trace off and with everything traced into Java.
class IPCBindingHandles : public IPCBindingsTest, public testing::WithParamInterface<bool> {
 protected:
  // The exception of closing the client or the server.
  std::string closingClient(jlong handle) {
    native::closeClient(env, handle);
    return takeException(env);
  }
  std::string closingServer(jlong handle) {
    native::closeServer(env, handle);
    return takeException(env);
  }

  // Opens a server that answers like that, asks it, and closes both.
  std::string askOnce(const JavaAnswers& answers, const std::string& name, const std::string& text) {
    const jlong server = openServer(answers.object(), name);
    const jlong client = openClient(name);
    std::string reply = ask(client, text);
    EXPECT_EQ(closingClient(client), "");
    EXPECT_EQ(closingServer(server), "");
    return reply;
  }

  const JavaDiagnostics diagnostics{GetParam() ? "=ALL" : ""};
};

// Acts in the moment in which a server refuses to be closed, for as long as it lives.
class AtRefusal : public LogHandler {
 public:
  explicit AtRefusal(std::function<void()> action) : LogHandler(LogLevel::ALL), action_(std::move(action)) {
    logger_.addHandler(*this);
  }
  ~AtRefusal() override { logger_.removeHandler(*this); }
  AtRefusal(const AtRefusal&) = delete;
  AtRefusal& operator=(const AtRefusal&) = delete;

  void publish(LogRecord& record) override {
    if (record.getType() == LogRecordType::THROWING && record.getSourceMethodName() == "disconnectUnlessServing")
      action_();
  }

 private:
  Logger& logger_ = *Logger::getLogger("IPCServerImpl");
  const std::function<void()> action_;
};

INSTANTIATE_TEST_SUITE_P(Trace, IPCBindingHandles, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "All" : "Off"; });

// The round leaves so many handles open, exactly. The machine keeps a few for each thread that it has ever served at
// the same time as others, so that the first rounds may leave more; a handle that is lost shows in all of them.
void expectGrowth(long growth, const std::function<void()>& round) {
  constexpr int kRounds = 10;
  std::vector<long> growths;
  for (int i = 0; i < kRounds; ++i) {
    const HandleBaseline handles;
    round();
    growths.push_back(handles.growthWithLocks());
    if (growths.back() == growth) return;
  }
  EXPECT_EQ(growths, std::vector<long>(kRounds, growth));
}

// Calls it on two threads at once, which leave nothing behind.
void onTwoThreads(const std::function<void()>& call) {
  const auto run = [](void* argument) -> DWORD {
    (*static_cast<const std::function<void()>*>(argument))();
    return 0;
  };
  HANDLE threads[2];
  auto* argument = const_cast<std::function<void()>*>(&call);
  for (HANDLE& thread : threads) thread = CreateThread(nullptr, 0, run, argument, 0, nullptr);
  WaitForMultipleObjects(2, threads, TRUE, INFINITE);
  for (const HANDLE thread : threads) CloseHandle(thread);
}

const std::string kThrown = kIPCException + shownMessage("KTBNV0070_JAVA_EXCEPTION_THROWN");

}  // namespace

TEST_P(IPCBindingHandles, OfNoObjectAreExceptions) {
  for (const jlong handle : {jlong{1}, jlong{-1}, jlong{0x7FFFFFFFFFFF0000}, reinterpret_cast<jlong>(this)}) {
    EXPECT_EQ(closingClient(handle), kNotOpen);
    EXPECT_EQ(closingServer(handle), kNotOpen);
    EXPECT_EQ(ask(handle, "a"), kNotOpen);
  }
  EXPECT_EQ(ask(0, "a"), kNotOpen);
}

TEST_P(IPCBindingHandles, OfTheOtherKindAreExceptionsAndHarmNobody) {
  const std::string name = uniqueService();
  const JavaAnswers answers(env, echo);
  const jlong server = openServer(answers.object(), name);
  const jlong client = openClient(name);
  EXPECT_EQ(closingClient(server), kNotOpen);
  EXPECT_EQ(closingServer(client), kNotOpen);
  EXPECT_EQ(ask(server, "a"), kNotOpen);
  EXPECT_EQ(ask(client, "a"), "a");
  EXPECT_EQ(closingClient(client), "");
  EXPECT_EQ(closingServer(server), "");
}

TEST_P(IPCBindingHandles, OfClosedObjectsAreExceptions) {
  const std::string name = uniqueService();
  const JavaAnswers answers(env, echo);
  const jlong server = openServer(answers.object(), name);
  const jlong client = openClient(name);
  EXPECT_EQ(closingClient(client), "");
  EXPECT_EQ(closingClient(client), kNotOpen);
  EXPECT_EQ(ask(client, "a"), kNotOpen);
  EXPECT_EQ(closingServer(server), "");
  EXPECT_EQ(closingServer(server), kNotOpen);
}

TEST_P(IPCBindingHandles, AreNotGivenOutAgainSoon) {
  constexpr std::size_t kSoon = 20;
  EchoListener listener;
  const TestServer server(listener);
  std::deque<jlong> closed;
  for (int i = 0; i < 100; ++i) {
    const jlong client = openClient(server.name());
    EXPECT_EQ(std::count(closed.begin(), closed.end(), client), 0) << i;
    EXPECT_EQ(closingClient(client), "");
    closed.push_back(client);
    if (closed.size() > kSoon) closed.pop_front();
  }
}

TEST_P(IPCBindingHandles, OfClientsLeaveNothingOpen) {
  constexpr int kClients = 20;
  const std::string name = uniqueService();
  RawServer server(name);
  const auto serveOne = [&] {
    EXPECT_TRUE(server.accept());
    EXPECT_NE(server.read(), "");
    EXPECT_TRUE(server.write(wireMessage(1, 0, "reply")));
    EXPECT_EQ(server.read(), "");  // the client has left
    DisconnectNamedPipe(server.handle());
  };
  const auto useOne = [&] {
    const jlong client = openClient(name);
    EXPECT_EQ(ask(client, "a"), "reply");
    EXPECT_EQ(closingClient(client), "");
  };
  const auto useMany = [&] {
    const auto serving = std::async(std::launch::async, [&] {
      for (int i = 0; i < kClients; ++i) serveOne();
    });
    for (int i = 0; i < kClients; ++i) useOne();
  };
  expectGrowth(0, useMany);
}

TEST_P(IPCBindingHandles, OfServersLeaveTheMonitorsOfTheirThreadsOnly) {
  constexpr int kServers = 10;
  const JavaAnswers answers(env, echo);
  const std::string name = uniqueService();
  const auto serve = [&] {
    for (int i = 0; i < kServers; ++i) EXPECT_EQ(askOnce(answers, name, "a"), "a");
  };
  expectGrowth(kServers * (kHandlesOfAServer + kHandlesOfAWorker), serve);
}

TEST_P(IPCBindingHandles, AReplyIsWhatTheObjectReturned) {
  const std::string name = uniqueService();
  std::string seen;
  const JavaAnswers answers(env, [&](JNIEnv& threadsEnv, jbyteArray request) {
    seen = takeBytes(threadsEnv, static_cast<jbyteArray>(threadsEnv.NewLocalRef(request)));
    return newBytes(threadsEnv, "re\0ply"s);
  });
  const jlong server = openServer(answers.object(), name);
  {
    TestClient client(name);
    EXPECT_EQ(shown(client.ask(4711, "re\0quest"s)), shown(IPCMessage(4711, 0, "re\0ply"s)));
    EXPECT_EQ(seen, "re\0quest"s);
    client.ask(1, "");
    EXPECT_EQ(seen, "");
  }
  EXPECT_EQ(closingServer(server), "");
}

TEST_P(IPCBindingHandles, AnObjectThatReturnsNullGivesAnEmptyReply) {
  const JavaAnswers answers(env, [](JNIEnv&, jbyteArray) { return nullptr; });
  EXPECT_EQ(askOnce(answers, uniqueService(), "a"), "");
}

TEST_P(IPCBindingHandles, OfALongReplyTheFirst1024BytesAreSent) {
  const JavaAnswers answers(
      env, [](JNIEnv& threadsEnv, jbyteArray) { return newBytes(threadsEnv, std::string(5000, 'x')); });
  EXPECT_EQ(askOnce(answers, uniqueService(), "a"), std::string(1024, 'x'));
}

TEST_P(IPCBindingHandles, WhatTheObjectThrowsIsDescribedAndTheServerGoesOn) {
  for (const char* thrown : {"java/io/IOException", "java/lang/IllegalStateException", "java/lang/AssertionError"}) {
    const std::string name = uniqueService();
    const JavaAnswers answers(env, [&](JNIEnv& threadsEnv, jbyteArray request) -> jbyteArray {
      if (threadsEnv.GetArrayLength(request) > 0) return request;
      const jclass clazz = threadsEnv.FindClass(thrown);
      const jmethodID constructor = threadsEnv.GetMethodID(clazz, "<init>", "()V");
      threadsEnv.Throw(static_cast<jthrowable>(threadsEnv.NewObject(clazz, constructor)));
      return nullptr;
    });
    const jlong server = openServer(answers.object(), name);
    const jlong client = openClient(name);
    calls::takeErrors();
    EXPECT_EQ(ask(client, ""), kThrown);
    std::string className = thrown;
    std::replace(className.begin(), className.end(), '/', '.');
    EXPECT_NE(calls::takeErrors().find(className), std::string::npos) << thrown;
    EXPECT_EQ(ask(client, "after"), "after");
    EXPECT_EQ(closingClient(client), "");
    EXPECT_EQ(closingServer(server), "");
  }
}

TEST_P(IPCBindingHandles, AnObjectMayAskItsOwnService) {
  const std::string name = uniqueService();
  const JavaAnswers answers(env, [&](JNIEnv& threadsEnv, jbyteArray request) -> jbyteArray {
    if (threadsEnv.GetArrayLength(request) == 0) return newBytes(threadsEnv, "inner");
    const jstring service = threadsEnv.NewStringUTF(name.c_str());
    const jlong client =
        native::openClient(threadsEnv, service, service, threadsEnv.NewStringUTF(properties().c_str()));
    const std::string reply = askOn(threadsEnv, client, "");
    native::closeClient(threadsEnv, client);
    return newBytes(threadsEnv, "<" + reply + ">");
  });
  EXPECT_EQ(askOnce(answers, name, "outer"), "<inner>");
}

TEST_P(IPCBindingHandles, AServerIsNotClosedFromInsideAndServesOn) {
  const std::string name = uniqueService();
  std::atomic<jlong> server{0};
  const JavaAnswers answers(env, [&](JNIEnv& threadsEnv, jbyteArray) {
    native::closeServer(threadsEnv, server);
    return newBytes(threadsEnv, takeException(threadsEnv));
  });
  server = openServer(answers.object(), name);
  const jlong client = openClient(name);
  const std::string refusal = kIPCException + "IPCServerImpl::disconnect called from within onMessage";
  EXPECT_EQ(ask(client, "a"), refusal);
  EXPECT_EQ(ask(client, "again"), refusal);
  EXPECT_EQ(closingClient(client), "");
  EXPECT_EQ(closingServer(server), "");
  EXPECT_EQ(closingServer(server), kNotOpen);
  EXPECT_EQ(openClient(name), 0);
  EXPECT_EQ(takeException(env).find("com.kelvo.tessel.ipc.IPCNotFoundException: "), 0U);
}

// Whoever closes it in that moment must not be told that there is no such server.
TEST_P(IPCBindingHandles, AServerThatRefusesToBeClosedIsOpenAllTheWhile) {
  const std::string name = uniqueService();
  std::atomic<jlong> server{0};
  std::string meanwhile;
  const JavaAnswers answers(env, [&](JNIEnv& threadsEnv, jbyteArray) {
    const AtRefusal reaction([&] {
      native::closeServer(threadsEnv, server);
      meanwhile = takeException(threadsEnv);
    });
    native::closeServer(threadsEnv, server);
    return newBytes(threadsEnv, takeException(threadsEnv));
  });
  server = openServer(answers.object(), name);
  RAS::setLevel(kPrefix + ".IPCServerImpl=FLOW");
  const jlong client = openClient(name);
  const std::string refusal = kIPCException + "IPCServerImpl::disconnect called from within onMessage";
  EXPECT_EQ(ask(client, "a"), refusal);
  EXPECT_EQ(meanwhile, refusal);
  EXPECT_EQ(closingClient(client), "");
  EXPECT_EQ(closingServer(server), "");
}

TEST_P(IPCBindingHandles, AServerThatIsClosedDuringARequestWaitsForItsReply) {
  const std::string name = uniqueService();
  Event entered;
  std::atomic<jlong> server{0};
  const JavaAnswers answers(env, [&](JNIEnv&, jbyteArray request) {
    entered.set();
    // The handle is refused as soon as the closing has begun.
    runOnOtherThread([&] {
      const AttachedThread thread;
      for (std::string thrown; thrown != kNotOpen; SwitchToThread()) {
        native::closeClient(thread.env(), server);
        thrown = takeException(thread.env());
      }
    });
    return request;
  });
  server = openServer(answers.object(), name);
  std::string reply;
  std::thread asking([&] { reply = TestClient(name).ask(1, "late").getMessageText(); });
  EXPECT_TRUE(entered.wait());
  EXPECT_EQ(closingServer(server), "");
  asking.join();
  EXPECT_EQ(reply, "late");
}

TEST_P(IPCBindingHandles, AClientThatIsClosedDuringItsRequestsEndsThemAll) {
  BlockingListener listener;
  const TestServer server(listener);
  const jlong client = openClient(server.name());
  const auto asking = [&](std::string& reply) {
    return std::thread([&] {
      const AttachedThread thread;
      reply = askOn(thread.env(), client, "a");
    });
  };
  std::string first;
  std::string second;
  std::thread inside = asking(first);
  EXPECT_TRUE(listener.waitEntered());
  std::thread waiting = asking(second);
  EXPECT_EQ(closingClient(client), "");
  inside.join();
  waiting.join();
  listener.release();
  EXPECT_EQ(first.find(kIPCException + "KTBNV0064E"), 0U) << first;
  EXPECT_TRUE(second == kNotOpen || second.find(kIPCException + "KTBNV0062E") == 0) << second;
  EXPECT_EQ(closingClient(client), kNotOpen);
  expectServes(server.name());
}

TEST_P(IPCBindingHandles, OfAClientThatThreadsShareLeaveNothingOpen) {
  constexpr int kRounds = 5;
  const JavaAnswers answers(env, echo);
  const std::string name = uniqueService();
  const auto share = [&] {
    const jlong server = openServer(answers.object(), name);
    const jlong client = openClient(name);
    onTwoThreads([&] {
      const AttachedThread thread;
      for (int i = 0; i < 20; ++i) EXPECT_EQ(askOn(thread.env(), client, "a"), "a");
    });
    EXPECT_EQ(closingClient(client), "");
    EXPECT_EQ(closingServer(server), "");
  };
  const auto shareOften = [&] {
    for (int i = 0; i < kRounds; ++i) share();
  };
  expectGrowth(kRounds * (kHandlesOfAServer + kHandlesOfAWorker), shareOften);
}

}  // namespace tessel::test
