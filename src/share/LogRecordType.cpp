#include <tessel/LogRecordType.h>

#include <ostream>

namespace tessel {

LogRecordType::LogRecordType() : value_(ENTRY) {}
LogRecordType::LogRecordType(const LogRecordTypeValue& value) : value_(value) {}
LogRecordType::LogRecordType(const LogRecordType& other) = default;
LogRecordType& LogRecordType::operator=(const LogRecordType& other) = default;
LogRecordType::~LogRecordType() = default;

bool LogRecordType::operator==(const LogRecordType& other) const { return value_ == other.value_; }
bool LogRecordType::operator!=(const LogRecordType& other) const { return value_ != other.value_; }

bool LogRecordType::isTraceable() const { return value_ != EVENT; }

std::string LogRecordType::toString() const {
  switch (value_) {
    case ENTRY:
      return "ENTRY   ";
    case EXIT:
      return "EXIT    ";
    case DATA:
      return "DATA    ";
    case THROWING:
      return "THROWING";
    case EVENT:
      return "EVENT   ";
    default:
      return "???     ";
  }
}

int LogRecordType::getValue() const { return value_; }

std::ostream& operator<<(std::ostream& stream, const LogRecordType& type) { return stream << type.toString(); }

}  // namespace tessel
