// Lines that cannot be written, and files that cannot be opened or restricted.
#include <gtest/gtest.h>

#include <memory>

#include <tessel/NYXIOException.h>
#include <tessel/NYXUtils.h>

#include "support/EventRecorder.h"
#include "support/FileHooks.h"
#include "support/Handles.h"
#include "support/LogFolder.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Names = std::vector<std::string>;

std::string systemText(DWORD error) { return NYXUtils::getLastErrorMessage(static_cast<int>(error)); }

class OutputFileFaults : public testing::Test {
 protected:
  // What the system opens for good in the first files and failures of a process.
  static void SetUpTestSuite() {
    EventRecorder recorder;
    const Tracing tracing("SecureFileHandler");
    const LogFolder other;
    other.write("plain", "");
    thrownBy<NYXIOException>([&] { other.open({}, "plain/t"); });
    const auto handler = other.open();
    const FullDisk disk(0);
    publishFailure(*handler, "");
  }
  ~OutputFileFaults() override { EXPECT_EQ(handles.growth(), made_); }

  // The monitor of each handler leaves a handle behind, whether its construction fails or not.
  std::unique_ptr<SecureFileHandler> open(const HandlerOptions& options = {},
                                          const std::string& pattern = "t%g.log") const {
    ++made_;
    return folder.open(options, pattern);
  }
  std::string constructionFailure(const HandlerOptions& options = {}) const {
    return thrownBy<NYXIOException>([&] { open(options); });
  }
  std::string openFailure(DWORD error) const {
    return messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", current, systemText(error));
  }
  // Nothing was left behind, and the next one gets the names.
  void expectReleased() const {
    for (const std::string& name : folder.names()) EXPECT_EQ(name.find(".lck"), std::string::npos) << name;
    EXPECT_EQ(handles.growth(), made_);
    open();
    for (const std::string& name : folder.names()) EXPECT_EQ(name.find(".1"), std::string::npos) << name;
  }
  static std::string publishFailure(SecureFileHandler& handler, const std::string& text) {
    return thrownBy<NYXIOException>([&] { handler.publish(text); });
  }

  const LogFolder folder;
  const std::string current = folder.path("t0.log");

 private:
  const HandleBaseline handles;
  mutable int made_ = 0;
};

TEST_F(OutputFileFaults, ADirectoryThatCannotBeMadeIsReportedWithTheSystemsText) {
  ImportHook<"CreateDirectoryA", decltype(CreateDirectoryA)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(constructionFailure(), messageText("KTBNV0051_MKDIR_FAILED", NYXUtils::getParent(current), kRareText));
  EXPECT_EQ(folder.names(), Names());
}

TEST_F(OutputFileFaults, APlainFileInPlaceOfTheDirectoryIsReported) {
  folder.write("plain", "file");
  EXPECT_EQ(thrownBy<NYXIOException>([&] { open({}, "plain/t%g.log"); }),
            messageText("KTBNV0051_MKDIR_FAILED", folder.path("plain"), systemText(ERROR_ALREADY_EXISTS)));
}

TEST_F(OutputFileFaults, ADirectoryThatMayNotBeWrittenIsReported) {
  {
    CreateHook hook;
    hook.failAlways(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
    EXPECT_EQ(constructionFailure(), openFailure(ERROR_ACCESS_DENIED));
  }
  expectReleased();
}

TEST_F(OutputFileFaults, AnExistingFileThatCannotBeAppendedToGivesTheNextName) {
  folder.write("t0.log", "not ours");
  const OpenFails fails(current, OPEN_EXISTING);
  open()->publish("line");
  EXPECT_EQ(folder.bytes("t0.log"), "not ours");
  EXPECT_EQ(folder.bytes("t0.log.1"), "line\r\n");
}

TEST_F(OutputFileFaults, ANewFileThatCannotBeOpenedReleasesTheLock) {
  {
    const OpenFails fails(current, OPEN_ALWAYS);
    EXPECT_EQ(constructionFailure(), openFailure(kRareError));
  }
  expectReleased();
}

TEST_F(OutputFileFaults, AnExistingFileThatCannotBeOpenedReleasesTheLock) {
  folder.write("t0.log", "kept");
  {
    const OpenFails fails(current, OPEN_ALWAYS);
    EXPECT_EQ(constructionFailure(), openFailure(kRareError));
  }
  EXPECT_EQ(folder.bytes("t0.log"), "kept");
  expectReleased();
}

TEST_F(OutputFileFaults, AFileThatCannotBeCutReleasesTheLock) {
  {
    const OpenFails fails(current, CREATE_ALWAYS);
    EXPECT_EQ(constructionFailure({.append = false}), openFailure(kRareError));
  }
  expectReleased();
}

TEST_F(OutputFileFaults, AFileWithoutASizeReleasesTheLock) {
  {
    SeekHook hook;
    hook.failOnce(kRareError);
    EXPECT_EQ(constructionFailure(), openFailure(kRareError));
  }
  expectReleased();
}

TEST_F(OutputFileFaults, AFileThatCannotBeRestrictedReleasesTheLock) {
  {
    SecureHook hook;
    hook.failOnce(kRareError);
    EXPECT_EQ(constructionFailure(), messageText("KTBNV0031_SETFILESECURITY_ERROR", kRareText, current));
  }
  expectReleased();
}

TEST_F(OutputFileFaults, ALockFailureOtherThanHeldIsTracedAndTheHandlerGoesOn) {
  EventRecorder recorder;
  const Tracing tracing("SecureFileHandler");
  const std::string lock = folder.path("t0.log.lck");
  const OpenFails fails(lock, OPEN_ALWAYS);
  open()->publish("line");
  EXPECT_EQ(recorder.traced("Failed to lock file: " + lock +
                            " reason: " + messageText("KTBNV0057_UNABLE_TO_LOCK_FILE", lock, kRareText)),
            1);
  EXPECT_EQ(folder.bytes("t0.log"), "line\r\n");
  EXPECT_EQ(folder.names(), Names{"t0.log"});
}

TEST_F(OutputFileFaults, ALockFileThatCannotBeDeletedIsTracedOnce) {
  EventRecorder recorder;
  const Tracing tracing("SecureFileHandler");
  const std::string lock = folder.path("t0.log.lck");
  {
    const auto handler = open();
    DeleteHook hook;
    hook.failOnce(kRareError);
    handler->close();
    handler->close();
    EXPECT_EQ(hook.calls(), 1U);
  }
  EXPECT_EQ(recorder.traced("Failed to delete file: " + lock), 1);
  EXPECT_EQ(recorder.tracedLevel("Failed to delete file: " + lock), LogLevel::FINER) << "the level of MODERATE trace";
  EXPECT_EQ(folder.names(), (Names{"t0.log", "t0.log.lck"}));
  open();
  EXPECT_EQ(folder.names(), Names{"t0.log"}) << "an old lock file locks nothing";
}

// Whether nobody has the file open.
bool isClosed(const std::string& path) {
  const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  CloseHandle(file);
  return true;
}

// The next process may rotate as soon as it has the lock.
TEST_F(OutputFileFaults, TheFileIsClosedBeforeItsLockIsReleased) {
  auto handler = open();
  handler->publish("line");
  const std::string lock = folder.path("t0.log.lck");
  ImportHook<"CloseHandle", decltype(CloseHandle)> hook;
  int released = 0;
  hook.replaceWith([&](HANDLE handle) {
    const bool held = !isClosed(lock);
    const BOOL done = hook.callOriginal(handle);
    if (held && isClosed(lock)) {
      ++released;
      EXPECT_TRUE(isClosed(current));
    }
    return done;
  });
  handler.reset();
  EXPECT_EQ(released, 1);
}

TEST_F(OutputFileFaults, FilesAreSharedForReadingAndWritingAndNotInherited) {
  CreateHook hook;
  int opened = 0;
  hook.replaceWith([&](LPCSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                       DWORD flags, HANDLE pattern) {
    EXPECT_EQ(security, nullptr);
    if (path == current) {
      EXPECT_EQ(sharing, static_cast<DWORD>(FILE_SHARE_READ | FILE_SHARE_WRITE));
      ++opened;
    }
    return hook.callOriginal(path, access, sharing, security, disposition, flags, pattern);
  });
  const auto handler = open({.limit = 1});
  handler->publish("1");
  handler->publish("2");
  EXPECT_EQ(opened, 2);
}

TEST_F(OutputFileFaults, ALineCostsOneCallOfTheSystem) {
  const auto handler = open();
  WriteHook writes;
  SeekHook seeks;
  for (int i = 0; i < 10; ++i) handler->publish("several\nlines\nat once");
  EXPECT_EQ(writes.calls(), 10U);
  EXPECT_EQ(seeks.calls(), 0U) << "nobody else can have written";
}

TEST_F(OutputFileFaults, WithoutTheLockTheEndIsAskedForBeforeEachLine) {
  const auto handler = open();
  handler->close();
  SeekHook seeks;
  for (int i = 0; i < 10; ++i) handler->publish("line");
  EXPECT_EQ(seeks.calls(), 10U);
}

TEST_F(OutputFileFaults, AFileOfMoreThanFourGigabytesHasReachedTheLimit) {
  folder.write("t0.log", "large");
  SeekHook hook;
  hook.replaceWith([&](HANDLE, LARGE_INTEGER, PLARGE_INTEGER position, DWORD) {
    hook.passOn();
    position->QuadPart = 0x100000005;
    return TRUE;
  });
  open({.limit = 0x7fffffff});
  EXPECT_EQ(folder.bytes("t1.log"), "large");
}

TEST_F(OutputFileFaults, AfterAFullDiskEachLineHasALineOfItsOwn) {
  const auto handler = open();
  handler->publish("before");
  {
    const FullDisk disk(4);
    EXPECT_EQ(publishFailure(*handler, "in flight"), openFailure(ERROR_DISK_FULL));
    EXPECT_EQ(publishFailure(*handler, "lost"), openFailure(ERROR_DISK_FULL));
  }
  handler->publish("after");
  handler->publish("and on");
  EXPECT_EQ(folder.bytes("t0.log"), "before\r\nin f\r\nafter\r\nand on\r\n");
}

TEST_F(OutputFileFaults, AFullDiskAtTheEndOfALineLeavesNoEmptyOne) {
  for (const DWORD room : {0U, 5U, 6U}) {
    const std::string name = std::to_string(room) + ".log";
    const auto handler = open({}, name);
    {
      const FullDisk disk(room);
      if (room == 6) {
        handler->publish("line");
      } else {
        thrownBy<NYXIOException>([&] { handler->publish("line"); });
      }
      thrownBy<NYXIOException>([&] { handler->publish("lost"); });
    }
    handler->publish("after");
    // Of a line end that was written in half the other half follows with the next line.
    const std::string start = room == 0 ? "" : room == 5 ? "line\r\r\n" : "line\r\n";
    EXPECT_EQ(folder.bytes(name), start + "after\r\n") << room;
  }
}

TEST_F(OutputFileFaults, AWriteWithoutProgressIsAFullDisk) {
  const auto handler = open();
  WriteHook hook;
  hook.replaceWith([](HANDLE, LPCVOID, DWORD, LPDWORD written, LPOVERLAPPED) {
    *written = 0;
    return TRUE;
  });
  EXPECT_EQ(publishFailure(*handler, "line"), openFailure(ERROR_DISK_FULL));
  hook.passOn();
  handler->publish("after");
  EXPECT_EQ(folder.bytes("t0.log"), "after\r\n");
}

TEST_F(OutputFileFaults, AShortWriteThatCanGoOnIsNoFailure) {
  const auto handler = open();
  WriteHook hook;
  hook.replaceWith([&](HANDLE file, LPCVOID bytes, DWORD, LPDWORD written, LPOVERLAPPED overlapped) {
    return hook.callOriginal(file, bytes, 1, written, overlapped);
  });
  handler->publish("line");
  handler->publish("next");
  EXPECT_EQ(folder.bytes("t0.log"), "line\r\nnext\r\n");
  EXPECT_EQ(hook.calls(), 12U);
}

TEST_F(OutputFileFaults, AFullDiskLeavesOlderGenerationsAsTheyAre) {
  folder.write("t1.log", "one\r\n");
  folder.write("t2.log", "two\r\n");
  const auto handler = open({.limit = 100});
  {
    const FullDisk disk(3);
    for (int i = 0; i < 50; ++i) publishFailure(*handler, "line");
  }
  handler->publish("after");
  EXPECT_EQ(folder.bytes("t0.log"), "lin\r\nafter\r\n");
  EXPECT_EQ(folder.bytes("t1.log"), "one\r\n");
  EXPECT_EQ(folder.bytes("t2.log"), "two\r\n");
}

TEST_F(OutputFileFaults, AProcessThatStartsAfterAFullDiskEndsTheLineInPart) {
  {
    const auto handler = open();
    const FullDisk disk(4);
    publishFailure(*handler, "in flight");
  }
  open()->publish("next run");
  EXPECT_EQ(folder.bytes("t0.log"), "in f\r\nnext run\r\n");
}

TEST_F(OutputFileFaults, AnEndThatCannotBeFoundIsReportedAndTheFileOpenedAgain) {
  const auto handler = open();
  handler->publish("1");
  handler->close();
  {
    SeekHook hook;
    hook.failOnce(kRareError);
    EXPECT_EQ(publishFailure(*handler, "lost"), openFailure(kRareError));
  }
  handler->publish("2");
  EXPECT_EQ(folder.bytes("t0.log"), "1\r\n2\r\n");
}

}  // namespace
}  // namespace tessel::test
