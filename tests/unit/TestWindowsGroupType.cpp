#include <gtest/gtest.h>

#include <type_traits>

#include <tessel/WindowsGroupType.h>

namespace tessel::test {
namespace {

WindowsGroupType::WindowsGroupTypeValue raw(int value) {
  return static_cast<WindowsGroupType::WindowsGroupTypeValue>(value);
}

TEST(WindowsGroupType, HasTheDocumentedValues) {
  EXPECT_EQ(WindowsGroupType::GUESTS, 1);
  EXPECT_EQ(WindowsGroupType::USERS, 2);
  EXPECT_EQ(WindowsGroupType::EVERYONE, 3);
  EXPECT_EQ(WindowsGroupType::OTHER, 4);
  static_assert(sizeof(WindowsGroupType::WindowsGroupTypeValue) == 4);
  static_assert(std::has_virtual_destructor_v<WindowsGroupType>);
}

TEST(WindowsGroupType, IsUsersByDefault) {
  EXPECT_EQ(WindowsGroupType().getValue(), WindowsGroupType::USERS);
  EXPECT_EQ(WindowsGroupType().toString(), "Users");
}

TEST(WindowsGroupType, NamesEachPrincipal) {
  EXPECT_EQ(WindowsGroupType(WindowsGroupType::GUESTS).toString(), "Guests");
  EXPECT_EQ(WindowsGroupType(WindowsGroupType::USERS).toString(), "Users");
  EXPECT_EQ(WindowsGroupType(WindowsGroupType::EVERYONE).toString(), "Everyone");
  EXPECT_EQ(WindowsGroupType(WindowsGroupType::OTHER).toString(), "other");
}

TEST(WindowsGroupType, NamesEveryOtherValueOther) {
  for (const int value : {-1, 0, 4, 5, 1000}) EXPECT_EQ(WindowsGroupType(raw(value)).toString(), "other") << value;
}

TEST(WindowsGroupType, ComparesValues) {
  EXPECT_TRUE(WindowsGroupType(WindowsGroupType::GUESTS) == WindowsGroupType(raw(1)));
  EXPECT_FALSE(WindowsGroupType(WindowsGroupType::GUESTS) == WindowsGroupType());
  EXPECT_TRUE(WindowsGroupType(raw(7)) != WindowsGroupType(WindowsGroupType::OTHER));
  EXPECT_FALSE(WindowsGroupType(raw(7)) != WindowsGroupType(raw(7)));
}

TEST(WindowsGroupType, CopiesItsValue) {
  const WindowsGroupType everyone(WindowsGroupType::EVERYONE);
  WindowsGroupType copy(everyone);
  EXPECT_EQ(copy.getValue(), WindowsGroupType::EVERYONE);
  copy = WindowsGroupType(WindowsGroupType::OTHER);
  EXPECT_EQ(copy.getValue(), WindowsGroupType::OTHER);
  EXPECT_EQ(everyone.getValue(), WindowsGroupType::EVERYONE);
}

}  // namespace
}  // namespace tessel::test
