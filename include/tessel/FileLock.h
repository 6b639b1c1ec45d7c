/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/Export.h>

namespace tessel {

/// A lock between processes, held for as long as the object lives and the process runs.
///
/// It is a file kept open with a restrictive sharing mode, so that the system releases it when a process is killed.
/// The file itself stays behind, empty, and locks nothing. By convention its name ends in ".lck".
class TESSEL_API FileLock {
 public:
  /// Takes the lock, without waiting.
  ///
  /// @param name path of the lock file; created when it is missing, never cut.
  /// @param shared lets other shared holders in; otherwise there is one holder only.
  /// @param writePid also writes this process's number, in decimal and without a line end, to the file of the same
  ///        name that ends in ".pid"; it is removed with the lock. Only for a lock that is not shared. A name that
  ///        does not end in ".lck" is captured as a failure: no number is written then, and the lock is held.
  /// @return the held lock, owned by the caller; deleting it releases the lock.
  /// @throws NYXException KTBNV0057 when another holder excludes this one or the file cannot be opened, KTBNV0121
  ///         when the process number cannot be written; the lock is not held then.
  static FileLock* newInstance(const std::string& name, bool shared, bool writePid);

  /// The same, but a lock that is held already is no failure.
  ///
  /// @return null when another holder excludes this one.
  static FileLock* newInstanceIfFree(const std::string& name, bool shared, bool writePid);

  FileLock(const FileLock& other) = delete;
  FileLock& operator=(const FileLock& other) = delete;
  virtual ~FileLock();

 protected:
  FileLock();

 private:
  friend TESSEL_API std::ostream& operator<<(std::ostream& stream, const FileLock& lock);

  virtual const void* getHandle() const = 0;
};

/// Writes "FileLock for handle: " and the handle.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const FileLock& lock);

}  // namespace tessel
