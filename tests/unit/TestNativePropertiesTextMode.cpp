#include <windows.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include <tessel/NativeProperties.h>

#include "support/TempFolder.h"

namespace tessel::test {
namespace {

std::string entriesOf(const std::string& bytes) {
  const TempFolder folder;
  NativeProperties properties;
  properties.loadProperties(folder.write("file", bytes).string());
  std::ostringstream text;
  text << properties;
  return text.str();
}

TEST(NativePropertiesTextMode, DropsTheCarriageReturnOfEachLineEnd) {
  EXPECT_EQ(entriesOf("a=1\r\nb=2\r\n"), "a=1,b=2");
  EXPECT_EQ(entriesOf("# comment\r\n\r\nc=3\r\n"), "c=3");
}

TEST(NativePropertiesTextMode, KeepsACarriageReturnInsideALine) { EXPECT_EQ(entriesOf("a=1\r2\r\n"), "a=1\r2"); }

TEST(NativePropertiesTextMode, EndsTheFileAtControlZ) { EXPECT_EQ(entriesOf("a=1\r\n\x1A\r\nb=2\r\n"), "a=1"); }

TEST(NativePropertiesTextMode, ReadsAFileThatOthersHaveOpen) {
  const TempFolder folder;
  const std::string path = folder.write("file", "a=1\n").string();
  const HANDLE other = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(other, INVALID_HANDLE_VALUE);
  NativeProperties properties;
  EXPECT_NO_THROW(properties.loadProperties(path));
  CloseHandle(other);
}

}  // namespace
}  // namespace tessel::test
