// The search for a byte, at every place and length round the width that it looks at.
#include <gtest/gtest.h>

#include <string>

#include "internal/ContainsByte.h"

namespace tessel::host {
namespace {

using internal::findByte;

TEST(FindByte, FindsTheFirstOneWhereverItStands) {
  for (std::size_t size = 0; size <= 33; ++size) {
    EXPECT_EQ(findByte(std::string(size, 'a'), '='), std::string::npos) << size;
    for (std::size_t at = 0; at < size; ++at) {
      std::string text(size, 'a');
      text[at] = '=';
      text.back() = '=';
      EXPECT_EQ(findByte(text, '='), at) << size;
    }
  }
}

TEST(FindByte, LooksFromThePlaceThatItIsTold) {
  const std::string text = "=a=aaaaaaaaaaaa=";
  EXPECT_EQ(findByte(text, '=', 0), 0U);
  EXPECT_EQ(findByte(text, '=', 1), 2U);
  EXPECT_EQ(findByte(text, '=', 3), 15U);
  EXPECT_EQ(findByte(text, '=', 16), std::string::npos);
}

TEST(FindByte, TakesNoOtherByteForIt) {
  for (int wanted = 0; wanted < 256; ++wanted) {
    std::string others;
    for (int byte = 0; byte < 256; ++byte) {
      if (byte != wanted) others += static_cast<char>(byte);
    }
    EXPECT_EQ(findByte(others, static_cast<char>(wanted)), std::string::npos) << wanted;
    EXPECT_EQ(findByte(others + static_cast<char>(wanted), static_cast<char>(wanted)), 255U) << wanted;
  }
}

}  // namespace
}  // namespace tessel::host
