// The server when the system refuses a pipe, an accept, a thread or an event.
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>

#include "faults/PipeFaults.h"
#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/Handles.h"
#include "support/RawPipe.h"

namespace tessel::test {
namespace {

using namespace std::chrono_literals;

using CreateNamedPipeHook = ImportHook<"CreateNamedPipeA", decltype(CreateNamedPipeA)>;
using ConnectNamedPipeHook = ImportHook<"ConnectNamedPipe", decltype(ConnectNamedPipe)>;
using CreateThreadHook = ImportHook<"CreateThread", decltype(CreateThread)>;
using CreateEventHook = ImportHook<"CreateEventA", decltype(CreateEventA)>;
using CreateFileHook = ImportHook<"CreateFileA", decltype(CreateFileA)>;

class PipeServer : public testing::Test {
 protected:
  std::string text(const char* key, DWORD error) const { return messageText(key, name_, systemText(error)); }

  EventRecorder recorder_;
  EchoListener listener_;
  const std::string name_ = uniqueService();
  const std::unique_ptr<IPCServer> server_{IPCServer::newInstance(name_, listener_, -1)};
};

TEST_F(PipeServer, ReportsThatItsFirstPipeCannotBeMadeAndConnectsLater) {
  CreateNamedPipeHook hook;
  hook.failOnce(kRare, INVALID_HANDLE_VALUE);
  const HandleBaseline handles;
  EXPECT_EQ(thrownBy<NYXException>([&] { server_->connect(); }), text("KTBNV0087_CREATE_NAMED_PIPE_FAILED", kRare));
  EXPECT_EQ(handles.growth(), kHandlesOfAServerStart);
  EXPECT_EQ(thrownBy<NYXException>([&] { server_->disconnect(); }), messageText("KTBNV0062_NOT_CONNECTED"));
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, ReportsThatItsFirstPipeCannotBeMadeWithinASecond) {
  CreateNamedPipeHook hook;
  hook.failOnce(kRare, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(endsWithin(1s, [&] { thrownBy<NYXException>([&] { server_->connect(); }); }));
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{});
}

TEST_F(PipeServer, TracesThatItsFirstPipeCannotBeMadeAndThatItsThreadIsDead) {
  CreateNamedPipeHook hook;
  hook.failOnce(kRare, INVALID_HANDLE_VALUE);
  const Tracing tracing("IPCServerImpl,IPCClientConnectionListener");
  const std::string message = thrownBy<NYXException>([&] { server_->connect(); });
  EXPECT_EQ(recorder_.traced(message), 1);
  EXPECT_EQ(recorder_.traced("clientConnectionListenerThread dead"), 1);
  EXPECT_EQ(recorder_.tracedValue("clientConnectionListenerThread dead"), message);
}

TEST_F(PipeServer, ReportsAStandardExceptionOutOfItsThreadAndConnectsLater) {
  CreateNamedPipeHook hook;
  hook.replaceWith([](auto...) -> HANDLE { throw std::runtime_error("foreign"); });
  EXPECT_EQ(thrownBy<NYXException>([&] { server_->connect(); }), "foreign");
  EXPECT_EQ(recorder_.count(messageText("KTBNV0149_UNCAUGHT_EXCEPTION", "class NYXException: foreign")), 1);
  hook.passOn();
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, MakesItsPipesAsDocumented) {
  std::vector<DWORD> openModes;
  CreateNamedPipeHook hook;
  hook.replaceWith([&](const char* path, DWORD open, DWORD mode, DWORD instances, DWORD out, DWORD in, DWORD timeout,
                       SECURITY_ATTRIBUTES* attributes) {
    openModes.push_back(open);
    EXPECT_EQ(path, "\\\\.\\pipe\\" + name_);
    EXPECT_EQ(mode, static_cast<DWORD>(PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT));
    EXPECT_EQ(instances, 255U);
    EXPECT_EQ(out, 1044U);
    EXPECT_EQ(in, 1044U);
    EXPECT_EQ(timeout, 0U);
    return hook.callOriginal(path, open, mode, instances, out, in, timeout, attributes);
  });
  server_->connect();
  expectServes(name_);
  expectServes(name_);
  server_->disconnect();
  ASSERT_GE(openModes.size(), 3U);
  EXPECT_EQ(openModes[0], static_cast<DWORD>(PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE));
  for (std::size_t i = 1; i < openModes.size(); ++i) EXPECT_EQ(openModes[i], static_cast<DWORD>(PIPE_ACCESS_DUPLEX));
}

// Keeps to the flag for the first instance also where the system does not.
HANDLE createAsWindowsDoes(const CreateNamedPipeHook& hook, const char* path, DWORD open, DWORD mode, DWORD instances,
                           DWORD out, DWORD in, DWORD timeout, SECURITY_ATTRIBUTES* attributes) {
  const bool first = (open & FILE_FLAG_FIRST_PIPE_INSTANCE) != 0;
  if (first && (WaitNamedPipeA(path, 1) || GetLastError() != ERROR_FILE_NOT_FOUND)) {
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
  }
  return hook.callOriginal(path, open, mode, instances, out, in, timeout, attributes);
}

TEST_F(PipeServer, RefusesANameThatAnotherServerHas) {
  CreateNamedPipeHook hook;
  hook.replaceWith([&](auto... arguments) { return createAsWindowsDoes(hook, arguments...); });
  server_->connect();
  const std::unique_ptr<IPCServer> second(IPCServer::newInstance(name_, listener_, -1));
  EXPECT_EQ(thrownBy<NYXException>([&] { second->connect(); }),
            text("KTBNV0087_CREATE_NAMED_PIPE_FAILED", ERROR_ACCESS_DENIED));
  expectServes(name_);
  server_->disconnect();
  second->connect();
  expectServes(name_);
  second->disconnect();
}

TEST_F(PipeServer, EndsWhenALaterPipeCannotBeMade) {
  CreateNamedPipeHook hook;
  ImportHook<"DisconnectNamedPipe", decltype(DisconnectNamedPipe)> disconnectPipe;
  ImportHook<"CloseHandle", decltype(CloseHandle)> close;
  close.replaceWith([&](HANDLE handle) {
    EXPECT_NE(handle, INVALID_HANDLE_VALUE) << "that is the process itself";
    EXPECT_NE(handle, nullptr);
    return close.callOriginal(handle);
  });
  disconnectPipe.replaceWith([&](HANDLE handle) {
    EXPECT_NE(handle, INVALID_HANDLE_VALUE);
    EXPECT_NE(handle, nullptr);
    return disconnectPipe.callOriginal(handle);
  });
  server_->connect();
  hook.failOnce(kRare, INVALID_HANDLE_VALUE);
  RawClient last(name_);
  EXPECT_TRUE(recorder_.waitFor(text("KTBNV0089_CONNECT_NAMED_PIPE_FAILED", ERROR_INVALID_HANDLE)));
  server_->disconnect();
  EXPECT_EQ(recorder_.errors(),
            (std::vector<std::string>{text("KTBNV0087_CREATE_NAMED_PIPE_FAILED", kRare),
                                      text("KTBNV0089_CONNECT_NAMED_PIPE_FAILED", ERROR_INVALID_HANDLE)}));
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, SurvivesAnAcceptThatFails) {
  ConnectNamedPipeHook hook;
  hook.failOnce(kRare);
  server_->connect();
  while (hook.calls() < 2) Sleep(1);  // the instance of the failed accept is gone
  expectServes(name_);
  server_->disconnect();
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{text("KTBNV0089_CONNECT_NAMED_PIPE_FAILED", kRare)});
}

TEST_F(PipeServer, PausesAfterSeveralFailingAcceptsAndCanBeStopped) {
  constexpr DWORD kPause = 100;
  std::atomic<int> pauses{0};
  ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)> wait;
  wait.replaceWith([&](HANDLE handle, DWORD milliseconds) {
    if (milliseconds == kPause) ++pauses;
    return wait.callOriginal(handle, milliseconds);
  });
  ConnectNamedPipeHook hook;
  hook.failAlways(kRare);
  server_->connect();
  ASSERT_TRUE(recorder_.waitFor(text("KTBNV0089_CONNECT_NAMED_PIPE_FAILED", kRare), 2));
  ASSERT_TRUE(recorder_.waitFor(text("KTBNV0089_CONNECT_NAMED_PIPE_FAILED", kRare), 6));
  EXPECT_GE(pauses, 2);
  EXPECT_TRUE(endsWithin(10s, [&] { server_->disconnect(); }));
  hook.passOn();
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, ServesAClientThatConnectedBeforeTheAccept) {
  ConnectNamedPipeHook hook;
  std::unique_ptr<RawClient> early;
  std::promise<DWORD> accepted;
  hook.replaceWith([&](HANDLE pipe, OVERLAPPED* overlapped) {
    if (early) return hook.callOriginal(pipe, overlapped);
    early = std::make_unique<RawClient>(name_);
    const BOOL done = hook.callOriginal(pipe, overlapped);
    const DWORD error = GetLastError();
    accepted.set_value(error);
    SetLastError(error);
    return done;
  });
  server_->connect();
  // No other client may take the instance of the early one.
  EXPECT_EQ(accepted.get_future().get(), static_cast<DWORD>(ERROR_PIPE_CONNECTED));
  expectServes(name_);
  EXPECT_EQ(early->ask(wireMessage(1, 0, "early")), wireMessage(1, 0, "early"));
  server_->disconnect();
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{});
}

TEST_F(PipeServer, SurvivesAClientThatIsGoneBeforeTheAccept) {
  ConnectNamedPipeHook hook;
  hook.replaceWith([&](HANDLE pipe, OVERLAPPED* overlapped) {
    if (hook.calls() == 1) RawClient(name_).close();
    return hook.callOriginal(pipe, overlapped);
  });
  server_->connect();
  while (hook.calls() < 2) Sleep(1);  // the instance of the lost client is gone
  expectServes(name_);
  server_->disconnect();
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{text("KTBNV0089_CONNECT_NAMED_PIPE_FAILED", ERROR_NO_DATA)});
}

TEST_F(PipeServer, ReportsThatItsThreadCannotBeStarted) {
  CreateThreadHook hook;
  hook.failOnce(kRare);
  const HandleBaseline handles;
  EXPECT_EQ(thrownBy<NYXException>([&] { server_->connect(); }),
            messageText("KTBNV0013_UNABLE_TO_CREATE_THREAD", std::to_string(kRare)));
  EXPECT_EQ(handles.growth(), 1) << "the monitor's event";
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, ReportsThatItsMonitorCannotBeMade) {
  const HandleBaseline handles;
  CreateEventHook hook;
  hook.failOnce(kRare);
  EXPECT_EQ(thrownBy<NYXException>([&] { server_->connect(); }),
            messageText("KTBNV0008_UNABLE_TO_CREATE_EVENT", std::to_string(kRare)));
  EXPECT_EQ(handles.growth(), 0);
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, EndsItsThreadWhenItCannotBeWatched) {
  ImportHook<"GetExitCodeThread", decltype(GetExitCodeThread)> hook;
  hook.failOnce(kRare);
  EXPECT_EQ(thrownBy<NYXException>([&] { server_->connect(); }),
            messageText("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", std::to_string(kRare)));
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, DropsAClientWhoseThreadCannotBeStarted) {
  server_->connect();
  expectServes(name_);
  CreateThreadHook hook;
  hook.failOnce(kRare);
  EXPECT_EQ(RawClient(name_).read(), "");
  expectServes(name_);
  server_->disconnect();
  const std::string reason = messageText("KTBNV0013_UNABLE_TO_CREATE_THREAD", std::to_string(kRare));
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{messageText("KTBNV0088_THREAD_START_FAILED", name_, reason)});
}

TEST_F(PipeServer, DropsAClientWhoseMonitorCannotBeMade) {
  server_->connect();
  expectServes(name_);
  CreateEventHook hook;
  hook.failOnce(kRare);
  EXPECT_EQ(RawClient(name_).read(), "");
  expectServes(name_);
  server_->disconnect();
  const std::string reason = messageText("KTBNV0008_UNABLE_TO_CREATE_EVENT", std::to_string(kRare));
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{messageText("KTBNV0088_THREAD_START_FAILED", name_, reason)});
}

TEST_F(PipeServer, StopsAlthoughItCannotConnectToItself) {
  server_->connect();
  TestClient idle(name_);
  EXPECT_EQ(idle.ask(1, "x").getMessageText(), "x");
  CreateFileHook hook;
  hook.failAlways(kRare, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(endsWithin(10s, [&] { server_->disconnect(); }));
  const std::string capture = captureIn(recorder_.errors());
  EXPECT_NE(capture.find("Class:      IPCClientConnectionListener\n"), std::string::npos) << capture;
  EXPECT_NE(capture.find("Method:     shutdown\n"), std::string::npos) << capture;
  EXPECT_NE(capture.find("Probe:      FFDC_001\n"), std::string::npos) << capture;
  EXPECT_NE(capture.find("Cause:      class NYXException: " + text("KTBNV0066_OPEN_ERROR", kRare)), std::string::npos)
      << capture;
  hook.passOn();
  server_->connect();
  expectServes(name_);
  server_->disconnect();
}

TEST_F(PipeServer, StopsAlthoughAllItsInstancesStayBusy) {
  server_->connect();
  CreateFileHook open;
  ImportHook<"WaitNamedPipeA", decltype(WaitNamedPipeA)> wait;
  open.failAlways(ERROR_PIPE_BUSY, INVALID_HANDLE_VALUE);
  wait.failAlways(ERROR_SEM_TIMEOUT);
  EXPECT_TRUE(endsWithin(10s, [&] { server_->disconnect(); }));
}

TEST_F(PipeServer, TerminatesNoThreadOfAnIdleClient) {
  ImportHook<"TerminateThread", decltype(TerminateThread)> terminate;
  server_->connect();
  TestClient idle(name_);
  idle.ask(1, "x");
  server_->disconnect();
  EXPECT_EQ(terminate.calls(), 0U);
}

TEST_F(PipeServer, TerminatesTheThreadWhoseReadCannotBeCancelled) {
  ImportHook<"TerminateThread", decltype(TerminateThread)> terminate;
  ImportHook<"CancelSynchronousIo", decltype(CancelSynchronousIo)> cancel;
  server_->connect();
  TestClient idle(name_);
  idle.ask(1, "x");
  cancel.failAlways(ERROR_NOT_FOUND);
  EXPECT_TRUE(endsWithin(20s, [&] { server_->disconnect(); }));
  EXPECT_EQ(terminate.calls(), 1U);
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{});
}

}  // namespace
}  // namespace tessel::test
