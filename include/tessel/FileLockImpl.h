/// @file
#pragma once

#include <string>

#include <tessel/FileLock.h>

namespace tessel {

class RasDescriptor;

/// The lock by a Windows file handle. Children do not inherit it.
class TESSEL_API FileLockImpl : public FileLock {
 public:
  /// Takes the lock; see FileLock::newInstance() for the arguments and for what is thrown.
  FileLockImpl(const std::string& name, bool shared, bool writePid);
  /// Removes the process number's file, then releases the lock.
  ~FileLockImpl() override;

 private:
  friend class FileLock;
  friend TESSEL_API std::ostream& operator<<(std::ostream& stream, const FileLockImpl& lock);

  // Holds nothing yet.
  explicit FileLockImpl(const std::string& name);

  const void* getHandle() const override;
  bool open(bool shared);
  void recordProcess(bool shared);

  static const RasDescriptor rd;

  std::string name_;
  std::string pidFile_;  // empty unless this object wrote it
  void* handle_;
};

/// Writes "FileLock for handle: " and the handle.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const FileLockImpl& lock);

}  // namespace tessel
