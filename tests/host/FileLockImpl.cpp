// The lock on the host: an advisory one, without the file of the process number that only Windows programs ask for.
#include <tessel/FileLockImpl.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <memory>
#include <ostream>

#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor FileLockImpl::rd("FileLockImpl", internal::kMessages);

namespace {

// A handle is a pointer that holds the descriptor: none is null then.
int* newDescriptor(int file) { return file < 0 ? nullptr : new int(file); }

}  // namespace

FileLock* FileLock::newInstance(const std::string& name, bool shared, bool writePid) {
  return new FileLockImpl(name, shared, writePid);
}

FileLock* FileLock::newInstanceIfFree(const std::string& name, bool shared, bool /*writePid*/) {
  const MethodTrace trace(FileLockImpl::rd, nullptr, "newInstanceIfFree", name, shared);
  std::unique_ptr<FileLockImpl> lock(new FileLockImpl(name));
  if (lock->open(shared)) return lock.release();
  const LastError error;
  if (error.number() == EWOULDBLOCK) return nullptr;
  throw trace.failure<NYXException>("KTBNV0057_UNABLE_TO_LOCK_FILE", name, error.text());
}

FileLockImpl::FileLockImpl(const std::string& name) : name_(name), handle_(nullptr) {}

FileLockImpl::FileLockImpl(const std::string& name, bool shared, bool /*writePid*/) : FileLockImpl(name) {
  const MethodTrace trace(rd, this, "FileLockImpl", name, shared);
  if (open(shared)) return;
  const LastError error;
  throw trace.failure<NYXException>("KTBNV0057_UNABLE_TO_LOCK_FILE", name, error.text());
}

FileLockImpl::~FileLockImpl() {
  const std::unique_ptr<int> file(static_cast<int*>(handle_));
  if (file) ::close(*file);
}

const void* FileLockImpl::getHandle() const { return handle_; }

bool FileLockImpl::open(bool shared) {
  const int file = ::open(name_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (file < 0) return false;
  if (::flock(file, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
    const LastError error;
    ::close(file);
    errno = static_cast<int>(error.number());
    return false;
  }
  handle_ = newDescriptor(file);
  return true;
}

std::ostream& operator<<(std::ostream& stream, const FileLockImpl& lock) {
  return stream << static_cast<const FileLock&>(lock);
}

}  // namespace tessel
