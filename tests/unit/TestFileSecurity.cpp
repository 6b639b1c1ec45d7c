#include <windows.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <tessel/FilePermissionsException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXUnsupportedOperationException.h>
#include <tessel/NYXUtils.h>

#include "support/Captures.h"
#include "support/Handles.h"
#include "support/PipePeers.h"
#include "support/Records.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

using testing::HasSubstr;
using Values = std::vector<std::string>;

// A drive letter that nothing is behind.
std::string missingDrive() {
  const DWORD drives = GetLogicalDrives();
  for (char letter = 'Y'; letter > 'C'; --letter) {
    if ((drives & 1U << (letter - 'A')) == 0) return std::string(1, letter) + ":";
  }
  ADD_FAILURE() << "every drive letter is taken";
  return "";
}

class FileSecurity : public testing::Test {
 protected:
  const TempFolder folder_;
  const std::string root_ = folder_.path().string();
};

TEST_F(FileSecurity, AFileOfTheUserPassesTheCheckOnlyWhenItIsPrivate) {
  const std::string file = folder_.write("file", "x").string();
  NYXUtils::mkpriv(file, true, false);
  EXPECT_EQ(thrownBy<FilePermissionsException>([&] { NYXUtils::checkFilePermissions(file); }),
            messageText("KTBNV0145_GROUP_HAS_ACCESS", "Everyone", file));
  NYXUtils::mkpriv(file, false, false);
  NYXUtils::checkFilePermissions(file);
}

TEST_F(FileSecurity, AMissingFileCannotBeSecured) {
  const std::string missing = root_ + "\\missing";
  EXPECT_EQ(thrownBy<NYXIOException>([&] { NYXUtils::mkpriv(missing, false, false); }),
            messageText("KTBNV0031_SETFILESECURITY_ERROR", systemText(ERROR_FILE_NOT_FOUND), missing));
}

TEST_F(FileSecurity, AMissingFileCannotBeChecked) {
  const std::string missing = root_ + "\\missing";
  EXPECT_EQ(thrownBy<FilePermissionsException>([&] { NYXUtils::checkFilePermissions(missing); }),
            messageText("KTBNV0139_GETFILESECURITY_ERROR", systemText(ERROR_FILE_NOT_FOUND), missing));
}

TEST_F(FileSecurity, ModeBitsAreNotSupported) {
  EXPECT_EQ(thrownBy<NYXUnsupportedOperationException>([&] { NYXUtils::chmod(root_, 0600); }),
            messageText("KTBNV0020_CHMOD_UNSUPPORTED"));
}

TEST_F(FileSecurity, AnotherGroupIsNotSupportedAndCaptured) {
  const Captures captures;
  EXPECT_EQ(thrownBy<NYXException>([&] { NYXUtils::mkGroupWrite(root_, "group", true); }),
            "NYXUtils::mkGroupWrite not implemented");
  EXPECT_EQ(captures.values("Class:"), Values{"NYXUtils"});
  EXPECT_EQ(captures.values("Method:"), Values{"mkGroupWrite"});
  EXPECT_EQ(captures.values("Probe:"), Values{"FFDC_001"});
  EXPECT_EQ(captures.values("Cause:"), Values{"class NYXException: NYXUtils::mkGroupWrite not implemented"});
}

TEST_F(FileSecurity, TheEmptyPathIsThere) { EXPECT_EQ(NYXUtils::mkdirs("", false), 0); }

TEST_F(FileSecurity, ADirectoryThatExistsIsThere) { EXPECT_EQ(NYXUtils::mkdirs(root_, false), 0); }

TEST_F(FileSecurity, MissingParentsAreMade) {
  const std::string path = root_ + "\\a\\b\\c\\d";
  EXPECT_EQ(NYXUtils::mkdirs(path, false), 0);
  EXPECT_TRUE(std::filesystem::is_directory(path));
  EXPECT_EQ(NYXUtils::mkdirs(path, false), 0);
}

TEST_F(FileSecurity, EitherSeparatorAndATrailingOneAreTaken) {
  EXPECT_EQ(NYXUtils::mkdirs(root_ + "/a/b\\c/", false), 0);
  EXPECT_TRUE(std::filesystem::is_directory(root_ + "\\a\\b\\c"));
  EXPECT_EQ(NYXUtils::mkdirs(root_ + "//x///y", false), 0);
  EXPECT_TRUE(std::filesystem::is_directory(root_ + "\\x\\y"));
}

TEST_F(FileSecurity, AFileIsNoDirectory) {
  const std::string file = folder_.write("file", "x").string();
  EXPECT_EQ(NYXUtils::mkdirs(file, false), -1);
  EXPECT_EQ(NYXUtils::mkdirs(file + "\\below", false), -1);
  EXPECT_EQ(NYXUtils::mkdirs(file + "\\below\\deeper", false), -1);
  EXPECT_TRUE(std::filesystem::is_regular_file(file));
}

TEST_F(FileSecurity, ADriveThatDoesNotExistIsGivenUp) {
  const std::string drive = missingDrive();
  EXPECT_EQ(NYXUtils::mkdirs(drive + "\\a\\b", false), -1);
  EXPECT_EQ(NYXUtils::mkdirs(drive + "\\a", false), -1);
}

TEST_F(FileSecurity, APathBeyondTheSystemsLengthIsAFailure) {
  std::string path = root_;
  while (path.size() < 100'000) path += "\\a";
  EXPECT_EQ(NYXUtils::mkdirs(path, false), -1);
}

TEST_F(FileSecurity, SeveralThreadsMakeOneDirectory) {
  for (int round = 0; round < 20; ++round) {
    const std::string path = root_ + "\\r" + std::to_string(round) + "\\a\\b";
    std::vector<int> results(4, 1);
    std::vector<std::thread> threads;
    for (int& result : results) threads.emplace_back([&] { result = NYXUtils::mkdirs(path, false); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(results, std::vector<int>(4, 0));
    EXPECT_TRUE(std::filesystem::is_directory(path));
  }
}

TEST_F(FileSecurity, NothingStaysOpen) {
  const std::string file = folder_.write("file", "x").string();
  NYXUtils::mkpriv(file, false, false);
  NYXUtils::checkFilePermissions(file);
  const HandleBaseline handles;
  for (int i = 0; i < 10; ++i) {
    NYXUtils::mkpriv(file, true, true);
    NYXUtils::mkGroupOmniWrite(file, false);
    thrownBy<FilePermissionsException>([&] { NYXUtils::checkFilePermissions(file); });
    NYXUtils::mkdirs(root_ + "\\d" + std::to_string(i), false);
  }
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(FileSecurity, EveryCallTracesItsArgumentsAndItsEnd) {
  const std::string file = folder_.write("file", "x").string();
  const TraceScope trace("NYXUtils=FLOW");
  const RecordingHandler log("NYXUtils");
  NYXUtils::mkpriv(file, false, true);
  NYXUtils::mkGroupOmniWrite(file, false);
  NYXUtils::mkdirs(root_, true);
  EXPECT_THROW(NYXUtils::checkFilePermissions(root_ + "\\missing"), FilePermissionsException);
  EXPECT_THROW(NYXUtils::chmod(file, 7), NYXUnsupportedOperationException);
  EXPECT_THROW(NYXUtils::mkGroupWrite(file, "staff", true), NYXException);
  const auto entry = [&](const std::string& method, std::size_t index = 0) {
    const auto records = recordsOf(log, LogRecordType::ENTRY, method);
    return index < records.size() ? records[index].message : "no entry";
  };
  EXPECT_THAT(entry("mkpriv"), HasSubstr("mkpriv [" + file + "] [false] [true]"));
  EXPECT_THAT(entry("setWindowsACLs"), HasSubstr("setWindowsACLs [" + file + "] [false] [false] [true]"));
  EXPECT_THAT(entry("mkGroupOmniWrite"), HasSubstr("mkGroupOmniWrite [" + file + "] [false]"));
  EXPECT_THAT(entry("setWindowsACLs", 1), HasSubstr("setWindowsACLs [" + file + "] [true] [true] [false]"));
  EXPECT_THAT(entry("mkdirs"), HasSubstr("mkdirs [" + root_ + "] [true]"));
  EXPECT_THAT(entry("checkFilePermissions"), HasSubstr("checkFilePermissions [" + root_ + "\\missing]"));
  EXPECT_THAT(entry("chmod"), HasSubstr("chmod [" + file + "] [7]"));
  EXPECT_THAT(entry("mkGroupWrite"), HasSubstr("mkGroupWrite [" + file + "] [staff] [true]"));
  EXPECT_THAT(recordsOf(log, LogRecordType::EXIT, "mkdirs").at(0).message, HasSubstr("returns [0] int"));
  EXPECT_EQ(recordsOf(log, LogRecordType::ENTRY).size(), recordsOf(log, LogRecordType::EXIT).size());
  EXPECT_EQ(recordsOf(log, LogRecordType::THROWING, "getSecurityDescriptor").size(), 1U);
  EXPECT_EQ(recordsOf(log, LogRecordType::THROWING, "chmod").size(), 1U);
  EXPECT_EQ(recordsOf(log, LogRecordType::THROWING, "mkGroupWrite").size(), 1U);
}

TEST_F(FileSecurity, AFailureIsTracedWhereItHappens) {
  const TraceScope trace("NYXUtils=FLOW");
  const RecordingHandler log("NYXUtils");
  EXPECT_THROW(NYXUtils::mkpriv(root_ + "\\missing", false, false), NYXIOException);
  const auto thrown = recordsOf(log, LogRecordType::THROWING);
  ASSERT_EQ(thrown.size(), 1U);
  EXPECT_EQ(thrown[0].methodName, "setWindowsACLs");
}

}  // namespace
}  // namespace tessel::test
