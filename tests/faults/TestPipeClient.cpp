// The client when each of its calls fails in turn.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <tessel/IPCNotFoundException.h>

#include "faults/PipeFaults.h"
#include "support/ChildProcess.h"
#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/Handles.h"
#include "support/RawPipe.h"
#include "support/StartedChild.h"

namespace tessel::test {
namespace {

using CreateFileHook = ImportHook<"CreateFileA", decltype(CreateFileA)>;
using WaitNamedPipeHook = ImportHook<"WaitNamedPipeA", decltype(WaitNamedPipeA)>;
using ReadFileHook = ImportHook<"ReadFile", decltype(ReadFile)>;
using OverlappedResultHook = ImportHook<"GetOverlappedResult", decltype(GetOverlappedResult)>;
using SleepHook = ImportHook<"Sleep", decltype(Sleep)>;

const ChildRegistration echoServer("serves-the-faulty-client", [] {
  EchoListener listener;
  const TestServer running(listener, -1, StartedChild::argument());
  Sleep(INFINITE);
  return 0;
});

// The server is another process: the handles of this one are the client's alone.
class PipeClient : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    service_ = uniqueService();
    server_ = std::make_unique<StartedChild>("serves-the-faulty-client", service_);
    connectWhenServed(service_)->ask(1, "x");
  }
  static void TearDownTestSuite() { server_.reset(); }

  std::string text(const char* key, DWORD error) const { return messageText(key, service_, systemText(error)); }

  template <class Exception>
  std::string connectFailure() {
    const HandleBaseline handles;
    const std::string message = thrownBy<Exception>([&] { client_->connect(); });
    EXPECT_EQ(handles.growth(), 0);
    return message;
  }

  IPCMessage ask(long timeout = 1) { return client_->sendMessage(IPCMessage(7, "x"), timeout); }

  std::string sendFailure() {
    const HandleBaseline handles;
    const std::string message = thrownBy<NYXException>([&] { ask(); });
    EXPECT_EQ(handles.growth(), 0);
    return message;
  }

  // After any failure callers disconnect; the next connection works.
  void TearDown() override {
    client_->disconnect();
    client_->connect();
    EXPECT_EQ(shown(ask()), "IPCMessage id:7 status:0 text :x");
    client_->disconnect();
  }

  static inline std::string service_;
  static inline std::unique_ptr<StartedChild> server_;
  const std::unique_ptr<IPCClient> client_{IPCClient::newInstance(service_, NativeProperties())};
};

TEST_F(PipeClient, OpensThePipeAsDocumented) {
  CreateFileHook hook;
  hook.replaceWith([&](const char* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes, DWORD disposition,
                       DWORD flags, HANDLE like) {
    EXPECT_EQ(path, "\\\\.\\pipe\\" + service_);
    EXPECT_EQ(access, GENERIC_READ | GENERIC_WRITE);
    EXPECT_EQ(share, 0U);
    EXPECT_EQ(attributes, nullptr);
    EXPECT_EQ(disposition, static_cast<DWORD>(OPEN_EXISTING));
    EXPECT_EQ(flags, static_cast<DWORD>(FILE_FLAG_OVERLAPPED));
    return hook.callOriginal(path, access, share, attributes, disposition, flags, like);
  });
  client_->connect();
  EXPECT_EQ(hook.calls(), 1U);
}

TEST_F(PipeClient, FindsNoServer) {
  CreateFileHook hook;
  hook.failOnce(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
  EXPECT_EQ(connectFailure<IPCNotFoundException>(), text("KTBNV0066_OPEN_ERROR", ERROR_FILE_NOT_FOUND));
}

TEST_F(PipeClient, IsDeniedAccess) {
  CreateFileHook hook;
  hook.failOnce(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
  EXPECT_EQ(connectFailure<NYXException>(), text("KTBNV0177_NOT_AUTHORIZED", ERROR_ACCESS_DENIED));
}

TEST_F(PipeClient, CannotOpenForAnyOtherReason) {
  CreateFileHook hook;
  hook.failOnce(kRare, INVALID_HANDLE_VALUE);
  EXPECT_EQ(connectFailure<NYXException>(), text("KTBNV0066_OPEN_ERROR", kRare));
}

TEST_F(PipeClient, GivesUpWhenThePipeStaysBusyForTwentySeconds) {
  CreateFileHook open;
  open.failOnce(ERROR_PIPE_BUSY, INVALID_HANDLE_VALUE);
  WaitNamedPipeHook wait;
  wait.replaceWith([&](const char* path, DWORD milliseconds) {
    EXPECT_EQ(path, "\\\\.\\pipe\\" + service_);
    EXPECT_EQ(milliseconds, 20000U);
    SetLastError(ERROR_SEM_TIMEOUT);
    return FALSE;
  });
  EXPECT_EQ(connectFailure<NYXException>(), text("KTBNV0067_OPEN_TIMEOUT", ERROR_SEM_TIMEOUT));
  EXPECT_EQ(wait.calls(), 1U);
}

TEST_F(PipeClient, TriesAgainAfterEachWaitForABusyPipe) {
  CreateFileHook open;
  open.replaceWith([&](auto... arguments) {
    if (open.calls() > 3) return open.callOriginal(arguments...);
    SetLastError(ERROR_PIPE_BUSY);
    return INVALID_HANDLE_VALUE;
  });
  WaitNamedPipeHook wait;
  wait.replaceWith([](const char*, DWORD) { return TRUE; });
  client_->connect();
  EXPECT_EQ(open.calls(), 4U);
  EXPECT_EQ(wait.calls(), 3U);
}

TEST_F(PipeClient, ClosesAPipeThatCannotBeReadByMessages) {
  ImportHook<"SetNamedPipeHandleState", decltype(SetNamedPipeHandleState)> hook;
  hook.failOnce(kRare);
  EXPECT_EQ(connectFailure<NYXException>(), text("KTBNV0068_PIPE_MODE_CHANGE_ERROR", kRare));
  client_->connect();
}

TEST_F(PipeClient, CannotWrite) {
  client_->connect();
  ImportHook<"WriteFile", decltype(WriteFile)> hook;
  hook.replaceWith([](HANDLE, const void*, DWORD, DWORD*, OVERLAPPED*) {
    SetLastError(kRare);
    return FALSE;
  });
  EXPECT_EQ(sendFailure(), text("KTBNV0063_WRITE_FAILED", kRare));
  hook.passOn();
}

TEST_F(PipeClient, CannotMakeTheEventOfItsRead) {
  client_->connect();
  ask();
  ImportHook<"CreateEventA", decltype(CreateEventA)> hook;
  hook.replaceWith([&, self = GetCurrentThreadId()](auto... arguments) -> HANDLE {
    if (GetCurrentThreadId() != self) return hook.callOriginal(arguments...);
    SetLastError(kRare);
    return nullptr;
  });
  EXPECT_EQ(sendFailure(), text("KTBNV0063_WRITE_FAILED", kRare));
  hook.passOn();
}

// Stands in for the reads of the test's own thread.
class ReadsOfThisThread {
 public:
  // What the next reads do; then they fail with kRare.
  explicit ReadsOfThisThread(std::vector<DWORD> errors) {
    hook_.replaceWith([this, errors, self = GetCurrentThreadId()](HANDLE pipe, void* buffer, DWORD size, DWORD* length,
                                                                  OVERLAPPED* overlapped) {
      if (GetCurrentThreadId() != self) return hook_.callOriginal(pipe, buffer, size, length, overlapped);
      EXPECT_EQ(GetLastError(), static_cast<DWORD>(NO_ERROR)) << "cleared before each read";
      EXPECT_EQ(size, 1044U);
      buffer_ = static_cast<char*>(buffer);
      *length = 0;
      SetLastError(count_ < errors.size() ? errors[count_] : kRare);
      ++count_;
      return FALSE;
    });
  }

  char* buffer() const { return buffer_; }
  std::size_t count() const { return count_; }

 private:
  ReadFileHook hook_;
  char* buffer_ = nullptr;
  std::size_t count_ = 0;
};

TEST_F(PipeClient, CannotRead) {
  client_->connect();
  const ReadsOfThisThread reads({kRare});
  EXPECT_EQ(sendFailure(), text("KTBNV0064_READ_FAILED", kRare));
}

TEST_F(PipeClient, CannotReadFromAServerThatIsGoneAtOnce) {
  client_->connect();
  const ReadsOfThisThread reads({ERROR_BROKEN_PIPE});
  EXPECT_EQ(sendFailure(), text("KTBNV0064_READ_FAILED", ERROR_BROKEN_PIPE));
}

TEST_F(PipeClient, ReturnsTheDefaultMessageAtTheEndOfFile) {
  client_->connect();
  const ReadsOfThisThread reads({ERROR_HANDLE_EOF});
  const HandleBaseline handles;
  EXPECT_EQ(shown(ask()), "IPCMessage id:-1 status:0 text :");
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(PipeClient, TracesTheEndOfFile) {
  client_->connect();
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  const ReadsOfThisThread reads({ERROR_HANDLE_EOF});
  ask();
  EXPECT_EQ(recorder.traced("ERROR_HANDLE_EOF"), 1);
}

// A read that stays pending: what the polls find, and how long the client sleeps, all in all, before each.
class PendingRead {
 public:
  // An error for each poll; NO_ERROR completes the read with the reply.
  PendingRead(std::vector<DWORD> errors, std::string reply) {
    const DWORD self = GetCurrentThreadId();
    sleep_.replaceWith([this, self](DWORD milliseconds) {
      if (GetCurrentThreadId() != self) return sleep_.callOriginal(milliseconds);
      slept_ += milliseconds;
      longest_ = std::max(longest_, milliseconds);
    });
    result_.replaceWith([this, errors, reply](HANDLE, OVERLAPPED*, DWORD* length, BOOL wait) -> BOOL {
      EXPECT_FALSE(wait);
      sleeps_.push_back(std::exchange(slept_, 0));
      const DWORD error = errors.at(result_.calls() - 1);
      *length = error == NO_ERROR ? static_cast<DWORD>(reply.size()) : 0;
      if (error == NO_ERROR) std::copy(reply.begin(), reply.end(), reads_.buffer());
      SetLastError(error);
      return error == NO_ERROR;
    });
  }

  const std::vector<DWORD>& sleeps() const { return sleeps_; }
  DWORD longestSleep() const { return longest_; }

 private:
  ReadsOfThisThread reads_{{ERROR_IO_PENDING}};
  OverlappedResultHook result_;
  SleepHook sleep_;
  std::vector<DWORD> sleeps_;
  DWORD slept_ = 0;
  DWORD longest_ = 0;
};

TEST_F(PipeClient, SleepsForTheIntervalBeforeEachPoll) {
  client_->connect();
  const PendingRead read({ERROR_IO_INCOMPLETE, ERROR_IO_INCOMPLETE, NO_ERROR}, wireMessage(7, 0, "after 12 seconds"));
  EXPECT_EQ(shown(ask(5000)), "IPCMessage id:7 status:0 text :after 12 seconds");
  EXPECT_EQ(read.sleeps(), (std::vector<DWORD>{5000, 5000, 5000}));
  EXPECT_EQ(read.longestSleep(), 100U);
}

TEST_F(PipeClient, PollsEveryMillisecondWithoutAnInterval) {
  client_->connect();
  const PendingRead read({ERROR_IO_INCOMPLETE, NO_ERROR}, wireMessage(7, 0, "x"));
  ask(-1);
  EXPECT_EQ(read.sleeps(), (std::vector<DWORD>{1, 1}));
}

TEST_F(PipeClient, GivesUpItsTimeSliceAtAnIntervalOfZero) {
  client_->connect();
  const PendingRead read({ERROR_IO_INCOMPLETE, NO_ERROR}, wireMessage(7, 0, "x"));
  ask(0);
  EXPECT_EQ(read.sleeps(), (std::vector<DWORD>{0, 0}));
}

TEST_F(PipeClient, ReturnsTheDefaultMessageWhenAPendingReadFindsTheEndOfFile) {
  client_->connect();
  const PendingRead read({ERROR_HANDLE_EOF}, "");
  EXPECT_EQ(shown(ask()), "IPCMessage id:-1 status:0 text :");
}

TEST_F(PipeClient, ReturnsTheDefaultMessageWhenAPendingReadFails) {
  client_->connect();
  EventRecorder recorder;
  const Tracing tracing("IPCClientImpl");
  const PendingRead read({ERROR_IO_INCOMPLETE, kRare}, "");
  EXPECT_EQ(shown(ask()), "IPCMessage id:-1 status:0 text :");
  EXPECT_EQ(recorder.tracedValue("Other Return code"), systemText(kRare));
  EXPECT_EQ(recorder.tracedValue("Length of data read"), "0");
}

TEST_F(PipeClient, LooksForItsReplyABoundedNumberOfTimes) {
  client_->connect();
  ImportHook<"PeekNamedPipe", decltype(PeekNamedPipe)> peek;
  peek.replaceWith([](HANDLE, void*, DWORD, DWORD*, DWORD* available, DWORD*) {
    *available = 0;
    return TRUE;
  });
  ask();
  EXPECT_LE(peek.calls(), 64U);
}

TEST_F(PipeClient, ReadsAlthoughItCannotLook) {
  client_->connect();
  ImportHook<"PeekNamedPipe", decltype(PeekNamedPipe)> peek;
  peek.failAlways(kRare);
  EXPECT_EQ(shown(ask()), "IPCMessage id:7 status:0 text :x");
  EXPECT_EQ(peek.calls(), 1U);
}

}  // namespace
}  // namespace tessel::test
