#include <tessel/FilePermissionsException.h>

namespace tessel {

FilePermissionsException::FilePermissionsException(const std::string& message) : NYXException(message) {}

FilePermissionsException::FilePermissionsException(const FilePermissionsException& other) = default;

FilePermissionsException::~FilePermissionsException() = default;

FilePermissionsException& FilePermissionsException::operator=(const FilePermissionsException& other) = default;

}  // namespace tessel
