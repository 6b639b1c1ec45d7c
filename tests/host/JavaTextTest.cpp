#include "internal/jni/Text.h"

#include <gtest/gtest.h>

namespace tessel::internal::jni {
namespace {

// The conversion's result, or "none: " and the text to show.
std::string ansiOf(std::string_view modifiedUtf8) {
  std::string ansi = "left over";
  return ansiFromJava(modifiedUtf8, ansi) ? ansi : "none: " + ansi;
}

}  // namespace

TEST(JavaText, PlainTextsGoToAnsiAsTheyAre) {
  EXPECT_EQ(ansiOf(""), "");
  EXPECT_EQ(ansiOf("C:\\Program Files\\users\\a~.txt"), "C:\\Program Files\\users\\a~.txt");
}

TEST(JavaText, CharactersOfTheCodePageGoToAnsi) { EXPECT_EQ(ansiOf("gr\xC3\xBC\xC3\x9F"), "gr\xFC\xDF"); }

TEST(JavaText, ANameWithACharacterWithoutCounterpartIsRefusedAndShownWithEscapes) {
  EXPECT_EQ(ansiOf("C:\\\xE4\xB8\xAD\\f\xC3\xBC"), "none: C:\\\\u4e2d\\f\\u00fc");
  EXPECT_EQ(ansiOf("\xED\xA0\xBD\xED\xB8\x80"), "none: \\ud83d\\ude00");
}

TEST(JavaText, ANameWithAZeroCharacterIsRefused) {
  EXPECT_EQ(ansiOf("a\xC0\x80"
                   "b"),
            "none: a\\u0000b");
}

TEST(JavaText, AMalformedNameIsRefused) {
  EXPECT_EQ(ansiOf("a\xC3"), "none: \\u0000");
  EXPECT_EQ(ansiOf("\xFF"), "none: \\u0000");
}

TEST(JavaText, PlainTextsGoToJavaAsTheyAre) {
  EXPECT_EQ(javaFromNative(""), "");
  EXPECT_EQ(javaFromNative("C:\\users\\update"), "C:\\users\\update");
}

TEST(JavaText, Utf8GoesToJavaAsModifiedUtf8) {
  EXPECT_EQ(javaFromNative("gr\xC3\xBC\xC3\x9F \xE4\xB8\xAD"), "gr\xC3\xBC\xC3\x9F \xE4\xB8\xAD");
  EXPECT_EQ(javaFromNative("\xF0\x9F\x98\x80"), "\xED\xA0\xBD\xED\xB8\x80");
  EXPECT_EQ(javaFromNative("\xF4\x8F\xBF\xBF"), "\xED\xAF\xBF\xED\xBF\xBF");
}

TEST(JavaText, ModifiedUtf8GoesToJavaAsItIs) {
  EXPECT_EQ(javaFromNative("a\xC0\x80"
                           "b"),
            "a\xC0\x80"
            "b");
  EXPECT_EQ(javaFromNative("\xED\xA0\xBD\xED\xB8\x80"), "\xED\xA0\xBD\xED\xB8\x80");
  EXPECT_EQ(javaFromNative("\xED\xA0\xBD"), "\xED\xA0\xBD");
}

TEST(JavaText, AZeroByteDoesNotEndATextOnItsWayToJava) {
  EXPECT_EQ(javaFromNative(std::string("a\0b", 3)),
            "a\xC0\x80"
            "b");
}

TEST(JavaText, WhatIsNotUtf8IsInTheCodePage) {
  EXPECT_EQ(javaFromNative("gr\xFC\xDF"), "gr\xC3\xBC\xC3\x9F");
  EXPECT_EQ(javaFromNative("\xC3\xBC and \xFC"), "\xC3\x83\xC2\xBC and \xC3\xBC");
}

TEST(JavaText, MalformedUtf8IsNeverPassedOn) {
  for (const char* malformed : {"\x80", "\xC3", "\xC0\x81", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xE4\xB8",
                                "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
                                "\xF8\x88\x80\x80\x80", "\xFE", "\xFF", "\xE4(\xAD"}) {
    std::string expected;  // each byte a character of the code page
    for (const char* byte = malformed; *byte; ++byte) {
      const auto value = static_cast<unsigned char>(*byte);
      if (value < 0x80) {
        expected += *byte;
      } else {
        expected += static_cast<char>(0xC0 | value >> 6);
        expected += static_cast<char>(0x80 | (value & 0x3F));
      }
    }
    EXPECT_EQ(javaFromNative(malformed), expected);
  }
}

TEST(JavaText, EscapesBecomeCharacters) {
  EXPECT_EQ(javaFromNative("na\\u00efve \\u4e2d"), "na\xC3\xAFve \xE4\xB8\xAD");
  EXPECT_EQ(javaFromNative("\\ud83d\\ude00"), "\xED\xA0\xBD\xED\xB8\x80");
  EXPECT_EQ(javaFromNative("a\\u0000b"),
            "a\xC0\x80"
            "b");
  EXPECT_EQ(javaFromNative("gr\xFC\\u00df"), "gr\xC3\xBC\xC3\x9F");
}

TEST(JavaText, WhatIsNoEscapeStays) {
  EXPECT_EQ(javaFromNative("\\u12 \\u12g4 \\ud83d \\"), "\\u12 \\u12g4 \\ud83d \\");
}

TEST(JavaText, ARefusedNameIsShownToJavaWithItsCharacters) {
  std::string shown;
  ASSERT_FALSE(ansiFromJava("C:/\xE4\xB8\xAD\xED\xA0\xBD\xED\xB8\x80", shown));
  EXPECT_EQ(javaFromNative(shown), "C:/\xE4\xB8\xAD\xED\xA0\xBD\xED\xB8\x80");
}

}  // namespace tessel::internal::jni
