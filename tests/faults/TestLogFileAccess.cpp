// Who may read the files of the diagnostics: what is handed to the system for each of them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include <tessel/FFDC.h>

#include "faults/FileSecurityHooks.h"
#include "support/CapturedOutput.h"
#include "support/Diagnostics.h"
#include "support/LogFolder.h"

namespace tessel::test {
namespace {

using Entries = std::vector<AceOf>;

constexpr DWORD kOwnerOfDirectory = 0xE01F0000;
constexpr DWORD kOwnerOfFile = 0xC01F0000;
constexpr unsigned kInherit = 3;

Entries privateDirectory() {
  return {allow(kOwnerOfDirectory, currentUser(), kInherit), allow(kOwnerOfDirectory, kAdministrators, kInherit)};
}

Entries privateFile() { return {allow(kOwnerOfFile, currentUser()), allow(kOwnerOfFile, kAdministrators)}; }

void expectHanded(const HandedLists::Handed& handed, const std::string& path, const Entries& entries) {
  EXPECT_EQ(handed.path, path);
  EXPECT_EQ(handed.list.entries, entries) << path;
}

TEST(LogFileAccess, ALogItsDirectoryAndEachNewGenerationAreTheUsersAndTheAdministrators) {
  const LogFolder folder;
  const HandedLists lists(true);
  const auto handler = folder.open({.limit = 1}, "logs\\t%g.log");
  handler->publish("1");
  handler->publish("2");
  ASSERT_EQ(lists.all().size(), 3U);
  expectHanded(lists.all()[0], folder.path("logs"), privateDirectory());
  for (const std::size_t i : {1U, 2U}) expectHanded(lists.all()[i], folder.path("logs\\t0.log"), privateFile());
}

// The property is called canRead, and lets everyone write as well.
TEST(LogFileAccess, ALogThatEveryoneMayReadMayBeWrittenByEveryoneToo) {
  const LogFolder folder;
  const HandedLists lists(true);
  const auto handler = folder.open({.limit = 1, .canRead = true}, "logs\\t%g.log");
  handler->publish("1");
  handler->publish("2");
  Entries directory = privateDirectory();
  directory.push_back(allow(0xE01F0000, kEveryone, kInherit));
  Entries file = privateFile();
  file.push_back(allow(0xC01F0000, kEveryone));
  ASSERT_EQ(lists.all().size(), 3U);
  expectHanded(lists.all()[0], folder.path("logs"), directory);
  for (const std::size_t i : {1U, 2U}) expectHanded(lists.all()[i], folder.path("logs\\t0.log"), file);
}

TEST(LogFileAccess, ALogThatIsContinuedIsRestrictedAgain) {
  const LogFolder folder;
  const std::string path = folder.write("t0.log", "of the last run\r\n");
  const HandedLists lists(true);
  folder.open();
  ASSERT_EQ(lists.all().size(), 1U);
  expectHanded(lists.all()[0], path, privateFile());
}

TEST(LogFileAccess, ACaptureAndItsFolderAreTheUsersAndTheAdministrators) {
  const Diagnostics diagnostics;
  const HandedLists lists(true);
  FFDC::capture("Class1", "method1", "probe", nullptr);
  const std::string folder = logDirectory().string() + "/ffdc";
  ASSERT_EQ(lists.all().size(), 2U);
  expectHanded(lists.all()[0], folder, privateDirectory());
  expectHanded(lists.all()[1], folder + "/" + namesIn(Diagnostics::captureFolder()).at(0), privateFile());
}

// Its text is longer than any buffer.
TEST(LogFileAccess, ACaptureIsRestrictedBeforeItHoldsAnythingAndItsLinesEndAsWindowsLinesDo) {
  const Diagnostics diagnostics;
  FFDC::capture("Class1", "makes the folder", "probe", nullptr);
  std::filesystem::remove_all(Diagnostics::captureFolder() / namesIn(Diagnostics::captureFolder()).at(0));
  const std::string longName(1U << 20U, 'x');
  ImportHook<"SetFileSecurityA", decltype(SetFileSecurityA)> hook;
  hook.replaceWith([&](LPCSTR path, SECURITY_INFORMATION kind, PSECURITY_DESCRIPTOR descriptor) {
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
    return hook.callOriginal(path, kind, descriptor);
  });
  FFDC::capture(longName, "method1", "probe", nullptr);
  EXPECT_EQ(hook.calls(), 1U);
  const std::string bytes = bytesOf(Diagnostics::captureFolder() / namesIn(Diagnostics::captureFolder()).at(0));
  EXPECT_NE(bytes.find("\r\nClass:      " + longName + "\r\nMethod:     method1\r\n"), std::string::npos);
  EXPECT_TRUE(bytes.ends_with("\r\n[EOF]\r\n"));
}

// A capture in its folder is announced to the logs, and so to the very file that is being restricted.
TEST(LogFileAccess, AFailureThatIsCapturedWhileALogIsRestrictedGoesToStandardError) {
  const Diagnostics diagnostics;
  const LogFolder folder;
  const auto handler = folder.open({.limit = 1});
  handler->publish("1");
  CapturedOutput error(CapturedOutput::error);
  ImportHook<"SetFileSecurityA", decltype(SetFileSecurityA)> hook;
  hook.replaceWith([&](LPCSTR path, SECURITY_INFORMATION kind, PSECURITY_DESCRIPTOR descriptor) {
    FFDC::capture("Class1", "method1", "probe", nullptr);
    return hook.callOriginal(path, kind, descriptor);
  });
  handler->publish("2");
  EXPECT_EQ(hook.calls(), 1U);
  EXPECT_NE(error.text().find("Class:      Class1"), std::string::npos);
  EXPECT_TRUE(Diagnostics::captures().empty());
}

}  // namespace
}  // namespace tessel::test
