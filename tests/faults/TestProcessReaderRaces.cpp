// Listeners that call back at the wrong moment, and readers that end too late.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <tessel/NYXThreadImpl.h>
#include <tessel/ProcessStreamReaderImpl.h>

#include "support/ImportHook.h"
#include "support/LaunchedProcess.h"
#include "support/NoMemory.h"
#include "support/RareError.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

using CancelHook = ImportHook<"CancelSynchronousIo", decltype(CancelSynchronousIo)>;
using CloseHook = ImportHook<"CloseHandle", decltype(CloseHandle)>;
using ReadHook = ImportHook<"ReadFile", decltype(ReadFile)>;
using ThreadHook = ImportHook<"CreateThread", decltype(CreateThread)>;
using WaitHook = ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)>;

void writeTo(NYXProcess& process, const std::string& text) {
  DWORD written = 0;
  EXPECT_NE(WriteFile(process.getInputStream(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr), 0);
}

// The exit codes that listeners saw.
class Codes {
 public:
  void add(int code) {
    const std::lock_guard guard(mutex_);
    codes_.push_back(code);
  }
  std::vector<int> all() const {
    const std::lock_guard guard(mutex_);
    return codes_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<int> codes_;
};

TEST(ProcessReaderRaces, ListenersMayUseTheObjectUntilItsEndHasWaitedForThem) {
  auto process = std::make_unique<LaunchedProcess>(child({"do-say", "x", "y", "9"}));
  LaunchedProcess& object = *process;
  const HANDLE input = object.getInputStream();
  Event ending;
  Event bothInside;
  std::atomic<int> inside{0};
  Codes codes;
  Callback both([&](const std::string&) {
    if (++inside == 2) bothInside.set();
    ending.wait();
    codes.add(object.getExitCode());
    object.stop();
    codes.add(object.waitForProcess());
  });
  object.registerOutputStreamListener(both);
  object.registerErrorStreamListener(both);
  object.start();
  ASSERT_TRUE(bothInside.wait());
  while (object.getExitCode() != 9) SwitchToThread();
  CloseHook hook;
  hook.replaceWith([&](HANDLE handle) {
    if (handle == input) ending.set();
    return hook.callOriginal(handle);
  });
  process.reset();
  EXPECT_EQ(codes.all(), (std::vector<int>{9, 9, 9, 9}));
}

TEST(ProcessReaderRaces, ListenersOfBothStreamsThatWaitForTheChildDoNotWaitForEachOther) {
  LaunchedProcess process(child({"do-say", "x", "y", "9"}));
  Event bothInside;
  std::atomic<int> inside{0};
  Codes codes;
  Callback both([&](const std::string&) {
    if (++inside == 2) bothInside.set();
    bothInside.wait();
    codes.add(process.waitForProcess());
  });
  process.registerOutputStreamListener(both);
  process.registerErrorStreamListener(both);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 9);
  EXPECT_EQ(codes.all(), (std::vector<int>{9, 9}));
}

// How often each thread reads, the first one first.
class Reads {
 public:
  Reads() {
    hook_.replaceWith([this](HANDLE handle, LPVOID buffer, DWORD size, LPDWORD length, LPOVERLAPPED overlapped) {
      enter();
      const BOOL result = hook_.callOriginal(handle, buffer, size, length, overlapped);
      leave();
      return result;
    });
  }

  int ofFirstThread() const {
    const std::lock_guard guard(mutex_);
    return static_cast<int>(std::count(threads_.begin(), threads_.end(), threads_.at(0)));
  }
  int atOnce() const {
    const std::lock_guard guard(mutex_);
    return most_;
  }

 private:
  void enter() {
    const std::lock_guard guard(mutex_);
    threads_.push_back(GetCurrentThreadId());
    most_ = std::max(most_, ++now_);
  }
  void leave() {
    const std::lock_guard guard(mutex_);
    --now_;
  }

  ReadHook hook_;
  mutable std::mutex mutex_;
  std::vector<DWORD> threads_;
  int now_ = 0;
  int most_ = 0;
};

TEST(ProcessReaderRaces, AListenerThatIsCalledWhileItIsRegisteredCanRegisterAnother) {
  LaunchedProcess process(child({"do-echo"}));
  process.start();
  writeTo(process, "one");
  Reads reads;
  Collector second;
  Event called;
  Callback replacing([&](const std::string&) {
    called.set();
    process.registerOutputStreamListener(second);
  });
  {
    ThreadHook hook;
    hook.replaceWith([&](auto... arguments) {
      const HANDLE thread = hook.callOriginal(arguments...);
      const bool calledEarly = hook.calls() == 1 && called.wait(std::chrono::milliseconds(100));
      EXPECT_FALSE(calledEarly);
      return thread;
    });
    process.registerOutputStreamListener(replacing);
    ASSERT_TRUE(called.wait());
    writeTo(process, "two");
    EXPECT_TRUE(second.waitForBytes(3));
  }
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(second.data(), "two");
  EXPECT_EQ(reads.ofFirstThread(), 1);
}

// The owner waits for the first listener, which meanwhile registers another.
TEST(ProcessReaderRaces, AListenerThatIsRegisteredWhileItIsReplacedIsReplacedAsWell) {
  LaunchedProcess process(child({"do-echo"}));
  Reads reads;
  Collector unwanted;
  Collector last;
  Event inside;
  Event waitedFor;
  Callback first([&](const std::string&) {
    inside.set();
    waitedFor.wait();
    process.registerOutputStreamListener(unwanted);
  });
  process.registerOutputStreamListener(first);
  process.start();
  writeTo(process, "one");
  ASSERT_TRUE(inside.wait());
  {
    WaitHook hook;
    hook.replaceWith([&](HANDLE handle, DWORD milliseconds) {
      waitedFor.set();
      return hook.callOriginal(handle, milliseconds);
    });
    process.registerOutputStreamListener(last);
  }
  writeTo(process, "two");
  ASSERT_TRUE(last.waitForBytes(3));
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(unwanted.data(), "");
  EXPECT_EQ(last.data(), "two");
  EXPECT_EQ(reads.atOnce(), 1);
}

TEST(ProcessReaderRaces, AReaderWhoseThreadRunsNeedsNoMoreMemory) {
  LaunchedProcess process(child({"do-say", "abc", ""}));
  process.start();
  Collector output;
  {
    NoMemory memory;
    ThreadHook hook;
    hook.replaceWith([&](auto... arguments) {
      const HANDLE thread = hook.callOriginal(arguments...);
      memory.refuse();
      return thread;
    });
    EXPECT_NO_THROW(process.registerOutputStreamListener(output));
  }
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "abc");
}

// The first read is done only when it is told to, and is deaf to being cancelled.
class LateRead {
 public:
  LateRead() {
    threads_.replaceWith([this](auto... arguments) {
      const HANDLE thread = threads_.callOriginal(arguments...);
      if (!thread_) thread_ = thread;
      return thread;
    });
    reads_.replaceWith([this](HANDLE handle, LPVOID buffer, DWORD size, LPDWORD length, LPOVERLAPPED overlapped) {
      if (taken_.exchange(true)) return reads_.callOriginal(handle, buffer, size, length, overlapped);
      reading_.set();
      released_.wait();
      *length = 4;
      std::fill_n(static_cast<char*>(buffer), *length, 'x');
      return TRUE;
    });
  }

  bool waitUntilReading() { return reading_.wait(); }
  // Returns when the reader's thread has ended.
  void release() {
    released_.set();
    WaitForSingleObject(thread_, INFINITE);
  }

 private:
  Event reading_;
  Event released_;
  std::atomic<bool> taken_{false};
  HANDLE thread_ = nullptr;
  ThreadHook threads_;
  ReadHook reads_;
};

TEST(ProcessReaderRaces, AReadThatIsDoneAfterTheEndOfTheObjectReachesNobody) {
  LateRead read;
  std::atomic<int> calls{0};
  Callback output([&](const std::string&) { ++calls; });
  {
    LaunchedProcess process(child({"do-exit", "0"}));
    process.registerOutputStreamListener(output);
    ASSERT_TRUE(read.waitUntilReading());
  }
  read.release();
  EXPECT_EQ(calls, 0);
}

TEST(ProcessReaderRaces, AReadThatIsDoneAfterTheWaitForAStoppedChildReachesNobody) {
  LateRead read;
  std::atomic<int> calls{0};
  Callback output([&](const std::string&) { ++calls; });
  LaunchedProcess process(child({"do-sleep"}));
  process.registerOutputStreamListener(output);
  process.start();
  ASSERT_TRUE(read.waitUntilReading());
  process.stop();
  EXPECT_EQ(process.waitForProcess(), 0);
  read.release();
  EXPECT_EQ(calls, 0);
}

TEST(ProcessReaderRaces, AReadThatIsDoneAfterItsListenerWasReplacedReachesNobody) {
  LateRead read;
  std::atomic<int> calls{0};
  Callback replaced([&](const std::string&) { ++calls; });
  LaunchedProcess process(child({"do-say", "abc", ""}));
  process.registerOutputStreamListener(replaced);
  ASSERT_TRUE(read.waitUntilReading());
  Collector output;
  process.registerOutputStreamListener(output);
  read.release();
  EXPECT_EQ(calls, 0);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "abc");
}

// A call that is under way is waited for, though the system does not tell when the thread ends.
TEST(ProcessReaderRaces, AReaderIsNotGivenUpWhileItsListenerIsCalled) {
  Event inside;
  Event goOn;
  std::atomic<bool> left{false};
  Callback output([&](const std::string&) {
    inside.set();
    goOn.wait();
    Sleep(50);  // takes its time
    left = true;
  });
  auto process = std::make_unique<LaunchedProcess>(child({"do-say", "x", ""}));
  process->registerOutputStreamListener(output);
  process->start();
  ASSERT_TRUE(inside.wait());
  WaitHook hook;
  hook.replaceWith([&](HANDLE, DWORD) -> DWORD {
    goOn.set();
    SetLastError(kRareError);
    return WAIT_FAILED;
  });
  process.reset();
  EXPECT_TRUE(left);
}

}  // namespace
}  // namespace tessel::test
