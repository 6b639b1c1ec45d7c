#include <gmock/gmock.h>

#include <limits>
#include <sstream>
#include <string>

#include <tessel/NativePropertyItem.h>

#include "support/Records.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

int integer(const NativePropertyItem& item, const std::string& value) { return item.getIntegerValue(&value); }
bool boolean(const NativePropertyItem& item, const std::string& value) { return item.getBooleanValue(&value); }

std::string integerFailure(const NativePropertyItem& item, const std::string& value) {
  return thrownBy<NYXException>([&] { item.getIntegerValue(&value); });
}

std::string booleanFailure(const NativePropertyItem& item, const std::string& value) {
  return thrownBy<NYXException>([&] { item.getBooleanValue(&value); });
}

std::string printed(const NativePropertyItem& item) {
  std::ostringstream text;
  text << item;
  return text.str();
}

TEST(NativePropertyItem, HasItsKeyAndTheDefaultOfItsType) {
  const NativePropertyItem string("s", std::string("text"));
  EXPECT_EQ(string.getKey(), "s");
  EXPECT_EQ(string.getDefaultStringValue(), "text");
  EXPECT_EQ(string.getDefaultIntegerValue(), 0);
  EXPECT_FALSE(string.getDefaultBooleanValue());
  const NativePropertyItem number("i", 5);
  EXPECT_EQ(number.getKey(), "i");
  EXPECT_EQ(number.getDefaultStringValue(), "");
  EXPECT_EQ(number.getDefaultIntegerValue(), 5);
  EXPECT_FALSE(number.getDefaultBooleanValue());
  const NativePropertyItem flag("b", true);
  EXPECT_EQ(flag.getKey(), "b");
  EXPECT_EQ(flag.getDefaultStringValue(), "");
  EXPECT_EQ(flag.getDefaultIntegerValue(), 0);
  EXPECT_TRUE(flag.getDefaultBooleanValue());
}

TEST(NativePropertyItem, KnowsItsTypeAndRange) {
  const NativePropertyItem string("s");
  EXPECT_EQ(string.getType(), NativePropertyItem::STRING);
  EXPECT_EQ(string.getMinimum(), 0);
  EXPECT_EQ(string.getMaximum(), 0);
  const NativePropertyItem number("i", 5, 1, 9);
  EXPECT_EQ(number.getType(), NativePropertyItem::INTEGER);
  EXPECT_EQ(number.getMinimum(), 1);
  EXPECT_EQ(number.getMaximum(), 9);
  EXPECT_EQ(NativePropertyItem("b", true).getType(), NativePropertyItem::BOOLEAN);
}

TEST(NativePropertyItem, OfAKeyOnlyIsAnEmptyString) {
  const NativePropertyItem item("k");
  EXPECT_EQ(item.getStringValue(nullptr), "");
}

TEST(NativePropertyItem, OfALiteralIsAStringAndNoBoolean) {
  const NativePropertyItem item("k", "false");
  EXPECT_EQ(item.getStringValue(nullptr), "false");
  EXPECT_EQ(thrownBy<NYXException>([&] { item.getBooleanValue(nullptr); }),
            messageText("KTBNV0117_NOT_A_BOOLEAN_PROP", "k"));
}

TEST(NativePropertyItem, GivesAStringUnchanged) {
  const NativePropertyItem item("k", "default");
  for (const std::string& value : {std::string(), std::string(" two words "), std::string("a\0b", 3)}) {
    EXPECT_EQ(item.getStringValue(&value), value);
  }
  EXPECT_EQ(item.getStringValue(nullptr), "default");
}

TEST(NativePropertyItem, AnotherTypeIsNoString) {
  const std::string value = "text";
  for (const NativePropertyItem& item : {NativePropertyItem("k", 5), NativePropertyItem("k", true)}) {
    EXPECT_EQ(thrownBy<NYXException>([&] { item.getStringValue(&value); }),
              messageText("KTBNV0115_NOT_A_STRING_PROP", "k"));
    EXPECT_EQ(thrownBy<NYXException>([&] { item.getStringValue(nullptr); }),
              messageText("KTBNV0115_NOT_A_STRING_PROP", "k"));
  }
}

TEST(NativePropertyItem, AnotherTypeIsNoInteger) {
  const std::string value = "5";
  for (const NativePropertyItem& item : {NativePropertyItem("k", "5"), NativePropertyItem("k", true)}) {
    EXPECT_EQ(thrownBy<NYXException>([&] { item.getIntegerValue(&value); }),
              messageText("KTBNV0116_NOT_AN_INTEGER_PROP", "k"));
    EXPECT_EQ(thrownBy<NYXException>([&] { item.getIntegerValue(nullptr); }),
              messageText("KTBNV0116_NOT_AN_INTEGER_PROP", "k"));
  }
}

TEST(NativePropertyItem, AnotherTypeIsNoBoolean) {
  const std::string value = "true";
  for (const NativePropertyItem& item : {NativePropertyItem("k", "true"), NativePropertyItem("k", 1)}) {
    EXPECT_EQ(thrownBy<NYXException>([&] { item.getBooleanValue(&value); }),
              messageText("KTBNV0117_NOT_A_BOOLEAN_PROP", "k"));
    EXPECT_EQ(thrownBy<NYXException>([&] { item.getBooleanValue(nullptr); }),
              messageText("KTBNV0117_NOT_A_BOOLEAN_PROP", "k"));
  }
}

TEST(NativePropertyItem, GivesTheIntegerDefaultWithoutCheckingIt) {
  EXPECT_EQ(NativePropertyItem("k", 5, 1, 10).getIntegerValue(nullptr), 5);
  EXPECT_EQ(NativePropertyItem("k", 50, 1, 10).getIntegerValue(nullptr), 50);
}

TEST(NativePropertyItem, AcceptsIntegersUpToBothEndsOfTheRange) {
  const NativePropertyItem item("k", 5, 1, 10);
  EXPECT_EQ(integer(item, "1"), 1);
  EXPECT_EQ(integer(item, "10"), 10);
}

TEST(NativePropertyItem, RefusesIntegersOutsideTheRange) {
  const NativePropertyItem item("k", 5, 1, 10);
  for (const char* value : {"0", "11", "-1", "2147483647"}) {
    EXPECT_EQ(integerFailure(item, value), messageText("KTBNV0119_OUT_OF_RANGE", "k", value, "1", "10"));
  }
}

TEST(NativePropertyItem, ScansAnIntegerAsTheCLibraryDoes) {
  const NativePropertyItem item("k", 5);
  EXPECT_EQ(integer(item, " 7"), 7);
  EXPECT_EQ(integer(item, " \t\n\v\f\r7"), 7);
  EXPECT_EQ(integer(item, "12abc"), 12);
  EXPECT_EQ(integer(item, "12 34"), 12);
  EXPECT_EQ(integer(item, "7.9"), 7);
  EXPECT_EQ(integer(item, "0x10"), 0);
  EXPECT_EQ(integer(item, "010"), 10);
  EXPECT_EQ(integer(item, "+5"), 5);
  EXPECT_EQ(integer(item, "-5"), -5);
  EXPECT_EQ(integer(item, "-0"), 0);
}

TEST(NativePropertyItem, RefusesATextWithoutLeadingDigits) {
  const NativePropertyItem item("k", 5, 1, 10);
  for (const char* value : {"abc", "", " ", " \t ", "+", "-", "+-5", "-+5", "--5", "- 5", ".5", "x5"}) {
    EXPECT_EQ(integerFailure(item, value), messageText("KTBNV0118_NOT_AN_INTEGER", "k", value)) << value;
  }
}

TEST(NativePropertyItem, HasTheFullSignedRangeByDefault) {
  const NativePropertyItem item("k", 5);
  EXPECT_EQ(integer(item, "2147483647"), std::numeric_limits<int>::max());
  EXPECT_EQ(integer(item, "-2147483648"), std::numeric_limits<int>::min());
}

TEST(NativePropertyItem, IntegersBeyond32BitsAreOutOfRange) {
  const NativePropertyItem item("k", 5);
  for (const char* value : {"2147483648", "-2147483649", "4294967301", "99999999999999999999"}) {
    EXPECT_EQ(integerFailure(item, value),
              messageText("KTBNV0119_OUT_OF_RANGE", "k", value, "-2147483648", "2147483647"));
  }
}

TEST(NativePropertyItem, AcceptsTheSixWordsOfABooleanInAnyCase) {
  const NativePropertyItem item("k", false);
  for (const char* value : {"true", "yes", "on", "TRUE", "Yes", "oN"}) EXPECT_TRUE(boolean(item, value)) << value;
  for (const char* value : {"false", "no", "off", "False", "NO", "OFF"}) EXPECT_FALSE(boolean(item, value)) << value;
}

TEST(NativePropertyItem, GivesTheBooleanDefault) {
  EXPECT_TRUE(NativePropertyItem("k", true).getBooleanValue(nullptr));
  EXPECT_FALSE(NativePropertyItem("k", false).getBooleanValue(nullptr));
}

TEST(NativePropertyItem, RefusesEveryOtherBoolean) {
  const NativePropertyItem item("k", true);
  for (const char* value : {"1", "0", "y", "n", "t", "", " true", "true ", "truee", "of"}) {
    EXPECT_EQ(booleanFailure(item, value), messageText("KTBNV0120_INVALID_BOOLEAN", "k", value)) << value;
  }
}

TEST(NativePropertyItem, PrintsKeyTypeAndDefaultWithoutSeparator) {
  EXPECT_EQ(printed(NativePropertyItem("k", "a value")), "kstring value: a value");
  EXPECT_EQ(printed(NativePropertyItem("k")), "kstring value: ");
  EXPECT_EQ(printed(NativePropertyItem("k", 5)), "kinteger value: 5 (min: -2147483648, max: 2147483647)");
  EXPECT_EQ(printed(NativePropertyItem("k", 5, 1, 10)), "kinteger value: 5 (min: 1, max: 10)");
  EXPECT_EQ(printed(NativePropertyItem("k", true)), "kboolean value: 1");
  EXPECT_EQ(printed(NativePropertyItem("k", false)), "kboolean value: 0");
}

TEST(NativePropertyItem, CopiesEverything) {
  const NativePropertyItem original("k", 5, 1, 10);
  const NativePropertyItem copy(original);
  NativePropertyItem assigned("other");
  assigned = original;
  EXPECT_EQ(printed(copy), printed(original));
  EXPECT_EQ(printed(assigned), printed(original));
}

TEST(NativePropertyItem, TracesGettersWithArgumentAndResult) {
  const NativePropertyItem item("k", 5);
  const TraceScope trace("NativePropertyItem=FLOW");
  const RecordingHandler log("NativePropertyItem");
  integer(item, "12abc");
  const auto entries = recordsOf(log, LogRecordType::ENTRY, "getIntegerValue");
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_THAT(entries[0].message, testing::HasSubstr("[12abc]"));
  const auto exits = recordsOf(log, LogRecordType::EXIT, "getIntegerValue");
  ASSERT_EQ(exits.size(), 1U);
  EXPECT_THAT(exits[0].message, testing::HasSubstr(" returns [12] int"));
}

TEST(NativePropertyItem, TracesItsConstructionAndItsThrows) {
  const TraceScope trace("NativePropertyItem=FLOW");
  const RecordingHandler log("NativePropertyItem");
  const NativePropertyItem item("k", true);
  EXPECT_THROW(item.getIntegerValue(nullptr), NYXException);
  EXPECT_EQ(recordsOf(log, LogRecordType::ENTRY, "NativePropertyItem").size(), 1U);
  EXPECT_EQ(recordsOf(log, LogRecordType::EXIT, "NativePropertyItem").size(), 1U);
  EXPECT_EQ(recordsOf(log, LogRecordType::THROWING, "getIntegerValue").size(), 1U);
}

}  // namespace
}  // namespace tessel::test
