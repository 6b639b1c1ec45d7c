// Rotations that fail half-way: no line is lost for it, and none is cut.
#include <gtest/gtest.h>

#include <optional>

#include <tessel/NYXIOException.h>
#include <tessel/NYXUtils.h>

#include "support/FileHooks.h"
#include "support/Handles.h"
#include "support/LogFolder.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

std::string systemText(DWORD error) { return NYXUtils::getLastErrorMessage(static_cast<int>(error)); }

// A viewer that does not let its file be renamed or deleted.
class Viewer {
 public:
  explicit Viewer(const std::string& path)
      : file_(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                          nullptr)) {
    EXPECT_NE(file_, INVALID_HANDLE_VALUE);
  }
  ~Viewer() { CloseHandle(file_); }
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

 private:
  HANDLE file_;
};

// Each line is rotated away by the next one.
class RotationFaults : public testing::Test {
 protected:
  // What the system opens for good in the first failures of a process.
  static void SetUpTestSuite() {
    const LogFolder other;
    const auto first = other.open({.limit = 1});
    first->publish("1");
    first->publish("2");
    const Viewer viewer(other.path("t0.log"));
    thrownBy<NYXIOException>([&] { first->publish("2"); });
  }
  RotationFaults() {
    folder.write("t1.log", "one\r\n");
    folder.write("t2.log", "two\r\n");
    handler = folder.open({.limit = 1});
    handler->publish("zero");
    handles.emplace();
  }

  std::string failure(const std::string& text) {
    return thrownBy<NYXIOException>([&] { handler->publish(text); });
  }
  std::string plainFailure(const std::string& text) {
    return thrownBy<NYXException>([&] { handler->publish(text); });
  }
  std::string renameFailure(const std::string& from, const std::string& to, const std::string& text) const {
    return messageText("KTBNV0056_RENAME_FAILED", folder.path(from), folder.path(to), text);
  }
  std::string openFailure() const { return messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", current, kRareText); }
  void expectBytes(const std::string& zero, const std::string& one, const std::string& two) const {
    EXPECT_EQ(folder.bytes("t0.log"), zero);
    EXPECT_EQ(folder.bytes("t1.log"), one);
    EXPECT_EQ(folder.bytes("t2.log"), two);
  }
  // `closed`: the current file is not open.
  void expectFiles(const std::string& zero, const std::string& one, const std::string& two, bool closed = false) const {
    expectBytes(zero, one, two);
    EXPECT_EQ(handles->growth(), closed ? -1 : 0);
  }

  const LogFolder folder;
  const std::string current = folder.path("t0.log");
  std::unique_ptr<SecureFileHandler> handler;
  std::optional<HandleBaseline> handles;
};

TEST_F(RotationFaults, AViewerOfTheCurrentFileDelaysTheRotation) {
  {
    const Viewer viewer(current);
    EXPECT_EQ(failure("a"), renameFailure("t0.log", "t1.log", systemText(ERROR_SHARING_VIOLATION)));
    EXPECT_EQ(failure("b"), renameFailure("t0.log", "t1.log", systemText(ERROR_SHARING_VIOLATION)));
  }
  expectFiles("zero\r\na\r\nb\r\n", "", "one\r\n");
  handler->publish("c");
  expectFiles("c\r\n", "zero\r\na\r\nb\r\n", "one\r\n");
}

TEST_F(RotationFaults, AViewerOfAnOlderGenerationDelaysTheRotationAndCostsNoGeneration) {
  {
    const Viewer viewer(folder.path("t1.log"));
    EXPECT_EQ(failure("a"), renameFailure("t1.log", "t2.log", systemText(ERROR_SHARING_VIOLATION)));
    EXPECT_EQ(failure("b"), renameFailure("t1.log", "t2.log", systemText(ERROR_SHARING_VIOLATION)));
    expectBytes("zero\r\na\r\nb\r\n", "one\r\n", "two\r\n");
  }
  handler->publish("c");
  expectFiles("c\r\n", "zero\r\na\r\nb\r\n", "one\r\n");
}

TEST_F(RotationFaults, AViewerOfTheOldestGenerationDelaysTheRotation) {
  {
    const Viewer viewer(folder.path("t2.log"));
    const std::string text = failure("a");
    EXPECT_EQ(text.find("KTBNV0056E"), 0U) << text;
    EXPECT_NE(text.find(folder.path("t2.log")), std::string::npos) << text;
    expectBytes("zero\r\na\r\n", "one\r\n", "two\r\n");
  }
  handler->publish("b");
  expectFiles("b\r\n", "zero\r\na\r\n", "one\r\n");
}

TEST_F(RotationFaults, AConstructorWhoseRotationFailsCutsNothingAndReleasesTheLock) {
  handler.reset();
  for (const bool append : {false, true}) {
    MoveHook hook;
    hook.failAlways(kRareError);
    EXPECT_EQ(thrownBy<NYXIOException>([&] { folder.open({.limit = 1, .append = append}); }),
              renameFailure("t1.log", "t2.log", kRareText));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"t0.log", "t1.log", "t2.log"}));
    // The file and the lock of the former handler are closed; each monitor leaves a handle behind.
    EXPECT_EQ(handles->growth(), append ? 1 : -1);
    handles.emplace();
    expectBytes("zero\r\n", "one\r\n", "two\r\n");
  }
}

TEST_F(RotationFaults, ARenameThatFailsStopsTheRotation) {
  MoveHook hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(failure("a"), renameFailure("t1.log", "t2.log", kRareText));
  EXPECT_EQ(hook.calls(), 1U);
  expectFiles("zero\r\na\r\n", "one\r\n", "two\r\n");
  handler->publish("b");
  expectFiles("b\r\n", "zero\r\na\r\n", "one\r\n");
}

TEST_F(RotationFaults, AFileThatCannotBeOpenedAgainIsOpenedByTheNextLine) {
  {
    MoveHook moves;
    moves.failAlways(kRareError);
    const OpenFails opens(current, OPEN_ALWAYS);
    EXPECT_EQ(failure("lost"), openFailure());
    EXPECT_EQ(failure("lost"), openFailure());
  }
  expectFiles("zero\r\n", "one\r\n", "two\r\n", true);
  handler->publish("a");
  expectFiles("a\r\n", "zero\r\n", "one\r\n");
}

TEST_F(RotationFaults, ANewFileThatCannotBeOpenedIsOpenedByTheNextLineAndRestricted) {
  {
    const OpenFails opens(current, CREATE_ALWAYS);
    EXPECT_EQ(failure("lost"), openFailure());
  }
  expectFiles("", "zero\r\n", "one\r\n", true);
  SecureHook secures;
  CheckHook checks;
  handler->publish("a");
  expectFiles("a\r\n", "zero\r\n", "one\r\n");
  EXPECT_EQ(secures.calls(), 1U);
  EXPECT_GT(checks.calls(), 0U);
}

// As while a viewer has it mapped into its memory.
TEST_F(RotationFaults, AnOnlyFileThatCannotBeEmptiedGoesOnAndIsEmptiedLater) {
  for (const std::string name : {"only.log", "only%g.log"}) {
    handler = folder.open({.limit = 1, .count = name == "only.log" ? 3 : 1}, name);
    handler->publish("zero");
    const std::string file = name == "only.log" ? name : "only0.log";
    SecureHook secures;
    {
      const OpenFails opens(folder.path(file), CREATE_ALWAYS);
      const std::string text = messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", folder.path(file), kRareText);
      EXPECT_EQ(failure("a"), text);
      EXPECT_EQ(failure("b"), text);
    }
    EXPECT_EQ(folder.bytes(file), "zero\r\na\r\nb\r\n");
    EXPECT_EQ(secures.calls(), 0U) << "it is the restricted one";
    handler->publish("c");
    EXPECT_EQ(folder.bytes(file), "c\r\n");
  }
}

TEST_F(RotationFaults, ANewFileThatCannotBeRestrictedGetsNoLine) {
  {
    SecureHook hook;
    hook.failAlways(kRareError);
    const std::string text = messageText("KTBNV0031_SETFILESECURITY_ERROR", kRareText, current);
    EXPECT_EQ(plainFailure("secret"), text);
    EXPECT_EQ(plainFailure("secret"), text);
    EXPECT_EQ(folder.bytes("t0.log"), "");
  }
  handler->publish("a");
  expectFiles("a\r\n", "zero\r\n", "one\r\n");
}

TEST_F(RotationFaults, ANewFileThatIsOpenToOthersGetsNoLine) {
  {
    CheckHook hook;
    hook.failAlways(kRareError);
    const std::string text = messageText("KTBNV0139_GETFILESECURITY_ERROR", kRareText, current);
    EXPECT_EQ(plainFailure("secret"), text);
    EXPECT_EQ(plainFailure("secret"), text);
    EXPECT_EQ(folder.bytes("t0.log"), "");
  }
  handler->publish("a");
  expectFiles("a\r\n", "zero\r\n", "one\r\n");
}

TEST_F(RotationFaults, AFailedRotationDoesNotRestrictTheFileAgain) {
  MoveHook moves;
  moves.failAlways(kRareError);
  SecureHook secures;
  failure("a");
  EXPECT_EQ(secures.calls(), 0U);
}

TEST_F(RotationFaults, FilesForEveryoneAreNotChecked) {
  handler = folder.open({.limit = 1, .canRead = true}, "open%g.log");
  SecureHook secures;
  CheckHook checks;
  secures.replaceWith([&](LPCSTR path, SECURITY_INFORMATION what, PSECURITY_DESCRIPTOR descriptor) {
    BOOL present = FALSE;
    PACL list = nullptr;
    BOOL defaulted = FALSE;
    EXPECT_NE(GetSecurityDescriptorDacl(descriptor, &present, &list, &defaulted), 0);
    EXPECT_EQ(list->AceCount, 3U) << "the user, the administrators and everyone";
    return secures.callOriginal(path, what, descriptor);
  });
  handler->publish("1");
  handler->publish("2");
  EXPECT_EQ(secures.calls(), 1U);
  EXPECT_EQ(checks.calls(), 0U);
}

TEST_F(RotationFaults, OtherFilesAreRestrictedAndCheckedAtEachRotation) {
  SecureHook secures;
  CheckHook checks;
  secures.replaceWith([&](LPCSTR path, SECURITY_INFORMATION what, PSECURITY_DESCRIPTOR descriptor) {
    BOOL present = FALSE;
    PACL list = nullptr;
    BOOL defaulted = FALSE;
    EXPECT_EQ(path, current);
    EXPECT_NE(GetSecurityDescriptorDacl(descriptor, &present, &list, &defaulted), 0);
    EXPECT_EQ(list->AceCount, 2U) << "the user and the administrators";
    return secures.callOriginal(path, what, descriptor);
  });
  for (const char* text : {"1", "2", "3"}) handler->publish(text);
  EXPECT_EQ(secures.calls(), 3U);
  EXPECT_EQ(checks.calls(), 6U) << "for the size, then for the list";
}

TEST_F(RotationFaults, AFullDiskDuringTheFirstLineOfAGenerationCostsThatLineOnly) {
  {
    const FullDisk disk(2);
    EXPECT_EQ(failure("in flight"), messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", current, systemText(ERROR_DISK_FULL)));
  }
  expectFiles("in", "zero\r\n", "one\r\n");
  handler->publish("a");
  expectFiles("a\r\n", "in", "zero\r\n");
}

TEST_F(RotationFaults, AFullDiskDuringARotationThatFailsReportsTheLineThatWasLost) {
  MoveHook moves;
  moves.failAlways(kRareError);
  {
    const FullDisk disk(2);
    EXPECT_EQ(failure("in flight"), messageText("KTBNV0054_UNABLE_TO_OPEN_FILE", current, systemText(ERROR_DISK_FULL)));
  }
  EXPECT_EQ(failure("a"), renameFailure("t1.log", "t2.log", kRareText));
  expectFiles("zero\r\nin\r\na\r\n", "one\r\n", "two\r\n");
}

}  // namespace
}  // namespace tessel::test
