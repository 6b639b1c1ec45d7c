#include <tessel/WindowsGroupType.h>

namespace tessel {

WindowsGroupType::WindowsGroupType() : value_(USERS) {}
WindowsGroupType::WindowsGroupType(const WindowsGroupTypeValue& value) : value_(value) {}
WindowsGroupType::WindowsGroupType(const WindowsGroupType& other) = default;
WindowsGroupType& WindowsGroupType::operator=(const WindowsGroupType& other) = default;
WindowsGroupType::~WindowsGroupType() = default;

bool WindowsGroupType::operator==(const WindowsGroupType& other) const { return value_ == other.value_; }
bool WindowsGroupType::operator!=(const WindowsGroupType& other) const { return value_ != other.value_; }

WindowsGroupType::WindowsGroupTypeValue WindowsGroupType::getValue() const { return value_; }

std::string WindowsGroupType::toString() const {
  switch (value_) {
    case GUESTS:
      return "Guests";
    case USERS:
      return "Users";
    case EVERYONE:
      return "Everyone";
    default:
      return "other";
  }
}

}  // namespace tessel
