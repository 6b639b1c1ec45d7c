#include "internal/DiagnosticsLock.h"

#include <tessel/NYXThreadSync.h>

namespace tessel::internal {
namespace {

thread_local unsigned marks = 0;
thread_local unsigned filesEntered = 0;

}  // namespace

NoBlockingTrace::NoBlockingTrace() noexcept : marks_(marks) { ++marks_; }

NoBlockingTrace::~NoBlockingTrace() { --marks_; }

bool NoBlockingTrace::active() noexcept { return marks != 0; }

DiagnosticsLock::DiagnosticsLock(NYXThreadSync& sync) : sync_(sync) { sync_.lock(); }

DiagnosticsLock::~DiagnosticsLock() { sync_.unlock(); }

InsideLogFile::InsideLogFile() noexcept : filesEntered_(filesEntered) { ++filesEntered_; }

InsideLogFile::~InsideLogFile() { --filesEntered_; }

bool InsideLogFile::active() noexcept { return filesEntered != 0; }

}  // namespace tessel::internal
