#include <tessel/SecureFileHandler.h>

#include <algorithm>
#include <limits>

#include <tessel/FileLock.h>
#include <tessel/LogRecord.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/NYXUtils.h>
#include <tessel/Synchronize.h>

#include "internal/Bundles.h"
#include "internal/ContainsByte.h"
#include "internal/DiagnosticsLock.h"
#include "internal/LastError.h"
#include "internal/LineFile.h"
#include "internal/MethodTrace.h"
#include "internal/UnicodeEscapes.h"

namespace tessel {

using internal::FileContent;
using internal::LastError;
using internal::LineFile;
using internal::MethodTrace;

const RasDescriptor SecureFileHandler::rd("SecureFileHandler", internal::kMessages);

namespace {

constexpr long kNoUniqueNumber = std::numeric_limits<int>::max();

}  // namespace

// What went wrong, to be thrown when the lock is no longer held: formatting may capture a failure, and a capture may
// have to wait for this handler.
struct SecureFileHandler::Failure {
  std::string file;    // empty when nothing has
  std::string target;  // of a rename
  LastError error{0};

  void throwIfAny(const MethodTrace& trace) const {
    if (file.empty()) return;
    if (!target.empty()) throw trace.failure<NYXIOException>("KTBNV0056_RENAME_FAILED", file, target, error.text());
    throw trace.failure<NYXIOException>("KTBNV0054_UNABLE_TO_OPEN_FILE", file, error.text());
  }
};

SecureFileHandler::SecureFileHandler(int limit, int count, bool canRead)
    : limit_(limit), count_(std::max(count, 1)), canRead_(canRead), sync_(new NYXThreadSyncImpl), out_(new LineFile) {}

SecureFileHandler::SecureFileHandler(const SecureFileHandler& other)
    : SecureFileHandler(other.limit_, other.count_, other.canRead_) {
  files_ = other.files_;
}

// The object is complete before anything is taken: what fails here gives it back by the destructor.
SecureFileHandler::SecureFileHandler(const std::string& pattern, int limit, int count, bool append, bool canRead,
                                     int generation)
    : SecureFileHandler(limit, count, canRead) {
  const MethodTrace trace(rd, this, "SecureFileHandler", pattern, limit, count, append, canRead);
  const long unique = chooseUnique(pattern, generation, kNoUniqueNumber);
  files_.push_back(getfileName(pattern, generation, unique));
  for (int i = 1; i < count_; ++i) files_.push_back(getfileName(pattern, i, unique));
  Failure failure;
  openFirst(append, failure);
  failure.throwIfAny(trace);
  restrict(false);
}

// The file first: who gets the lock next may rename it at once.
SecureFileHandler::~SecureFileHandler() {
  out_->close();
  SecureFileHandler::close();
}

std::string SecureFileHandler::getfileName(const std::string& pattern, int generation, long unique) {
  std::string name = pattern;
  const std::string number = std::to_string(generation);
  for (std::size_t at = 0; (at = name.find("%g", at)) != std::string::npos; at += number.size()) {
    name.replace(at, 2, number);
  }
  return unique > 0 ? name + '.' + std::to_string(unique) : name;
}

long SecureFileHandler::chooseUnique(const std::string& pattern, int generation, long end) {
  MethodTrace trace(rd, this, "chooseUnique", pattern, generation);
  const std::string parent = NYXUtils::getParent(getfileName(pattern, generation, 0));
  if (NYXUtils::mkdirs(parent, canRead_) != 0) {
    const LastError error;
    throw trace.failure<NYXIOException>("KTBNV0051_MKDIR_FAILED", parent, error.text());
  }
  for (long unique = 0; unique < end; ++unique) {
    const std::string file = getfileName(pattern, generation, unique);
    // The lock comes first: a look at a file that another process is rotating would make its rename fail.
    if (!lock(file)) continue;
    if (!internal::fileExists(file) || internal::canAppend(file)) return trace.result(unique);
    close();
  }
  throw trace.failure<NYXIOException>("KTBNV0055_UNABLE_TO_CREATE_FILE", pattern);
}

// Returns false when another process has the file.
bool SecureFileHandler::lock(const std::string& file) {
  const MethodTrace trace(rd, this, "lock", file);
  const std::string path = file + ".lck";
  const auto report = [&](const std::string& reason) {
    trace.data(TraceLevel::MODERATE, "Failed to lock file: " + path + " reason: " + reason);
  };
  try {
    fileLock_.reset(FileLock::newInstanceIfFree(path, false, false));
    if (!fileLock_) {
      report("it is held already");
      return false;
    }
    lockFilePath_ = path;
  } catch (const NYXException& exception) {
    report(exception.getMessage());
  }
  return true;
}

void SecureFileHandler::openFirst(bool append, Failure& failure) {
  const bool exists = internal::fileExists(files_[0]);
  if (exists && append) {
    if (!open(FileContent::kept, failure) || out_->size(true) < limit_) return;
    out_->close();
  }
  if (exists && !rotateFile(failure)) return;
  open(append ? FileContent::kept : FileContent::emptied, failure);
}

// To be called at once after a call of the system has failed.
void SecureFileHandler::noteFailure(Failure& failure) const {
  const LastError error;
  failure = {files_[0], {}, error};
}

bool SecureFileHandler::open(FileContent content, Failure& failure) {
  const bool opened = out_->open(files_[0], content);
  if (!opened) noteFailure(failure);
  return opened;
}

// A file that cannot be restricted does not stay open: no line goes to it, and the next line tries again.
void SecureFileHandler::restrict(bool check) {
  const internal::InsideLogFile mark;  // what is called here traces, and may capture a failure
  try {
    NYXUtils::mkpriv(files_[0], canRead_, canRead_);
    if (check && !canRead_) NYXUtils::checkFilePermissions(files_[0]);
  } catch (const NYXException&) {
    out_->close();
    throw;
  }
}

void SecureFileHandler::restrictAgain() {
  try {
    restrict(true);
  } catch (const NYXException& exception) {
    throw NYXException(exception);  // the handlers above are promised this kind
  }
}

// Oldest first, so that every name is free or about to be replaced. Names are equal when the pattern has no "%g": the
// file is then left to be emptied.
bool SecureFileHandler::rotateFile(Failure& failure) const {
  for (std::size_t i = files_.size(); --i > 0;) {
    const std::string& from = files_[i - 1];
    if (from == files_[i] || internal::renameFile(from, files_[i]) != internal::Renamed::failed) continue;
    const LastError error;
    failure = {from, files_[i], error};
    return false;
  }
  return true;
}

// When the generations cannot be renamed, or the only file there is cannot be emptied, the current file goes on.
void SecureFileHandler::rotate(Failure& failure) {
  const bool isOnlyFile = files_.size() == 1 || files_[0] == files_[1];
  out_->close();
  const bool renamed = rotateFile(failure);
  if (renamed && open(FileContent::emptied, failure)) {
    restrictAgain();
  } else if (!renamed || isOnlyFile) {
    open(FileContent::kept, failure);
  }
}

// Leaves the file open if a line can be written, whatever else has failed.
void SecureFileHandler::makeReady(Failure& failure) {
  if (!out_->isOpen()) {
    if (!open(FileContent::kept, failure)) return;
    restrictAgain();
  }
  const std::int64_t size = out_->size(fileLock_ != nullptr);
  if (size < 0) {
    noteFailure(failure);
    out_->close();
  } else if (size >= limit_) {
    rotate(failure);
  }
}

void SecureFileHandler::writeLine(const std::string& text, Failure& failure) {
  const Synchronize guard(sync_.get());
  makeReady(failure);
  if (out_->isOpen() && !out_->writeLine(text)) noteFailure(failure);
}

void SecureFileHandler::publish(const std::string& text) {
  const MethodTrace trace(rd, this, "publish");
  Failure failure;
  const bool escaped = internal::containsByte(text, '\\') && text.find("\\u") != std::string::npos;
  if (escaped) {
    writeLine(getUtf8EncodedString(text), failure);
  } else {
    writeLine(text, failure);
  }
  failure.throwIfAny(trace);
}

void SecureFileHandler::publish(const LogRecord& record) {
  constexpr std::size_t kUsualLine = 256;
  std::string line;
  line.reserve(kUsualLine);
  record.appendTo(line);
  publish(line);
}

void SecureFileHandler::close() {
  const MethodTrace trace(rd, this, "close");
  std::string left;
  {
    const internal::DiagnosticsLock guard(*sync_);
    fileLock_.reset();
    if (!lockFilePath_.empty() && !internal::removeFile(lockFilePath_)) left = lockFilePath_;
    lockFilePath_.clear();
  }
  if (!left.empty()) trace.data(TraceLevel::MODERATE, "Failed to delete file: " + left);
}

std::string SecureFileHandler::getUtf8EncodedString(std::string text) {
  if (text.find("\\u") == std::string::npos) return text;
  return internal::withoutEscapes(text);
}

std::string SecureFileHandler::convertToUtf8(unsigned int codePoint) {
  std::string text;
  internal::appendUtf8(text, codePoint);
  return text;
}

}  // namespace tessel
