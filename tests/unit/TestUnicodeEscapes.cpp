// The escapes that a SecureFileHandler replaces.
#include <gtest/gtest.h>

#include "support/LogFolder.h"

namespace tessel {
namespace {

class UnicodeEscapes : public testing::Test {
 protected:
  std::string encoded(const std::string& text) { return handler->getUtf8EncodedString(text); }
  void expectUnchanged(const std::string& text) { EXPECT_EQ(encoded(text), text); }

  const test::LogFolder folder;
  const std::unique_ptr<SecureFileHandler> handler = folder.open();
};

TEST_F(UnicodeEscapes, BecomeOneToThreeBytes) {
  EXPECT_EQ(encoded("\\u0041"), "A");
  EXPECT_EQ(encoded("\\u00e9"), "\xC3\xA9");
  EXPECT_EQ(encoded("\\u20AC"), "\xE2\x82\xAC");
  EXPECT_EQ(encoded("\\u0000"), std::string(1, '\0'));
  EXPECT_EQ(encoded("\\uFFFF"), "\xEF\xBF\xBF");
}

TEST_F(UnicodeEscapes, HaveExactlyFourDigits) {
  EXPECT_EQ(encoded("\\u00e90"),
            "\xC3\xA9"
            "0");
  expectUnchanged("\\u00e");
  expectUnchanged("\\u00eg");
  expectUnchanged("\\u+0e9");
  expectUnchanged("\\u");
  expectUnchanged("\\U00e9");
  expectUnchanged("\\");
}

TEST_F(UnicodeEscapes, MayStandAnywhereAndBesideEachOther) {
  EXPECT_EQ(encoded("caf\\u00E9 \\u00e9\\u00C9!"), "caf\xC3\xA9 \xC3\xA9\xC3\x89!");
  EXPECT_EQ(encoded("\\\\u0041"), "\\A");
  EXPECT_EQ(encoded("\\u\\u0041"), "\\uA");
  EXPECT_EQ(encoded("C:\\users\\u0041"), "C:\\usersA");
}

TEST_F(UnicodeEscapes, OfASurrogatePairBecomeOneCharacter) {
  EXPECT_EQ(encoded("\\uD83D\\uDE00"), "\xF0\x9F\x98\x80");
  EXPECT_EQ(encoded("\\ud800\\udc00"), "\xF0\x90\x80\x80");
  EXPECT_EQ(encoded("\\uDBFF\\uDFFF"), "\xF4\x8F\xBF\xBF");
}

TEST_F(UnicodeEscapes, OfALoneSurrogateStay) {
  expectUnchanged("\\uD83D");
  expectUnchanged("\\uDE00");
  expectUnchanged("\\uDE00\\uD83D");
  expectUnchanged("\\uD83D \\uDE00");
  EXPECT_EQ(encoded("\\uD83D\\u0041"), "\\uD83DA");
  EXPECT_EQ(encoded("\\uD83D\\uD83D\\uDE00"), "\\uD83D\xF0\x9F\x98\x80");
}

TEST_F(UnicodeEscapes, LeaveAllOtherBytes) {
  expectUnchanged("");
  expectUnchanged(std::string("plain\0\xff\xC3\xA9", 9));
}

TEST_F(UnicodeEscapes, AreReplacedInTheFile) {
  handler->publish("caf\\u00e9");
  EXPECT_EQ(folder.bytes("t0.log"), "caf\xC3\xA9\r\n");
}

TEST_F(UnicodeEscapes, CodePointsHaveTheirStandardEncoding) {
  EXPECT_EQ(handler->convertToUtf8(0x7F), "\x7F");
  EXPECT_EQ(handler->convertToUtf8(0x80), "\xC2\x80");
  EXPECT_EQ(handler->convertToUtf8(0x7FF), "\xDF\xBF");
  EXPECT_EQ(handler->convertToUtf8(0x800), "\xE0\xA0\x80");
  EXPECT_EQ(handler->convertToUtf8(0xFFFF), "\xEF\xBF\xBF");
  EXPECT_EQ(handler->convertToUtf8(0x10000), "\xF0\x90\x80\x80");
  EXPECT_EQ(handler->convertToUtf8(0x10FFFF), "\xF4\x8F\xBF\xBF");
  EXPECT_EQ(handler->convertToUtf8(0x110000), "");
  EXPECT_EQ(handler->convertToUtf8(0xFFFFFFFF), "");
}

}  // namespace
}  // namespace tessel
