#include <tessel/FileLock.h>

#include <ostream>

namespace tessel {

FileLock::FileLock() = default;
FileLock::~FileLock() = default;

std::ostream& operator<<(std::ostream& stream, const FileLock& lock) {
  return stream << "FileLock for handle: " << lock.getHandle();
}

}  // namespace tessel
