#include <tessel/FileLockImpl.h>

#include <memory>
#include <ostream>
#include <string_view>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/SystemFile.h"
#include "internal/pc/UniqueHandle.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;
using internal::UniqueHandle;

const RasDescriptor FileLockImpl::rd("FileLockImpl", internal::kMessages);

namespace {

constexpr std::string_view kLockEnding = ".lck";

// The lock and the file of the process number are opened alike. No security attributes: children inherit nothing.
HANDLE openFile(const std::string& name, bool shared) {
  return CreateFileA(name.c_str(), shared ? GENERIC_READ : GENERIC_WRITE, shared ? FILE_SHARE_READ : 0, nullptr,
                     OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Replaces what an earlier process has left.
bool writeNumber(const UniqueHandle& file) {
  const std::string number = std::to_string(GetCurrentProcessId());
  DWORD written = 0;
  return WriteFile(file.get(), number.data(), static_cast<DWORD>(number.size()), &written, nullptr) &&
         written == number.size() && SetEndOfFile(file.get());
}

}  // namespace

FileLock* FileLock::newInstance(const std::string& name, bool shared, bool writePid) {
  return new FileLockImpl(name, shared, writePid);
}

FileLock* FileLock::newInstanceIfFree(const std::string& name, bool shared, bool writePid) {
  const MethodTrace trace(FileLockImpl::rd, nullptr, "newInstanceIfFree", name, shared, writePid);
  std::unique_ptr<FileLockImpl> lock(new FileLockImpl(name));
  if (!lock->open(shared)) {
    const LastError error;
    if (error.number() == ERROR_SHARING_VIOLATION) return nullptr;
    throw trace.failure<NYXException>("KTBNV0057_UNABLE_TO_LOCK_FILE", name, error.text());
  }
  if (writePid) lock->recordProcess(shared);
  return lock.release();
}

FileLockImpl::FileLockImpl(const std::string& name) : name_(name), handle_(nullptr) {}

// The object is complete before the lock is taken: what fails here releases it by the destructor.
FileLockImpl::FileLockImpl(const std::string& name, bool shared, bool writePid) : FileLockImpl(name) {
  const MethodTrace trace(rd, this, "FileLockImpl", name, shared, writePid);
  if (!open(shared)) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0057_UNABLE_TO_LOCK_FILE", name, error.text());
  }
  if (writePid) recordProcess(shared);
}

FileLockImpl::~FileLockImpl() {
  const MethodTrace trace(rd, this, "~FileLockImpl", name_);
  const UniqueHandle lock(handle_);
  // While the lock is held: afterwards the file may be that of the next holder.
  if (pidFile_.empty() || internal::removeFile(pidFile_)) return;
  const LastError error;
  trace.data(TraceLevel::MODERATE, "Failed to delete PID file, reason: " + error.text());
}

const void* FileLockImpl::getHandle() const { return handle_; }

bool FileLockImpl::open(bool shared) {
  handle_ = UniqueHandle(openFile(name_, shared)).release();
  return handle_ != nullptr;
}

void FileLockImpl::recordProcess(bool shared) {
  const MethodTrace trace(rd, this, "recordProcess", name_, shared);
  if (!name_.ends_with(kLockEnding)) {
    const NYXException failure("File lock name expected to end .lck but doesn't");
    FFDC::capture(rd, "FileLockImpl", FFDC::PROBE_001(), &failure);
    return;
  }
  const std::string path = name_.substr(0, name_.size() - kLockEnding.size()) + ".pid";
  UniqueHandle file(openFile(path, shared));
  if (file) pidFile_ = path;
  if (!file || !writeNumber(file)) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0121_UNABLE_TO_OPEN_FILE", path, error.text());
  }
  if (file.close()) return;
  const LastError error;
  trace.data(TraceLevel::MODERATE, "Failed to close PID file, reason: " + error.text());
}

std::ostream& operator<<(std::ostream& stream, const FileLockImpl& lock) {
  return stream << static_cast<const FileLock&>(lock);
}

}  // namespace tessel
