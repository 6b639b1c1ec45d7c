// Locks of the diagnostics, and what a thread that holds one may do.
#pragma once

namespace tessel {
class NYXThreadSync;
class NYXThreadSyncImpl;
}  // namespace tessel

namespace tessel::internal {

struct ThreadState;

// Marks that this thread must not block on the trace lock: it only tries it and drops the trace point when the
// lock is taken. Without that rule a thread that publishes a trace record and needs one of the other locks would
// meet, and never pass, a thread that holds that lock and traces.
class NoBlockingTrace {
 public:
  NoBlockingTrace() noexcept;
  explicit NoBlockingTrace(ThreadState& thread) noexcept;
  ~NoBlockingTrace();
  NoBlockingTrace(const NoBlockingTrace&) = delete;
  NoBlockingTrace& operator=(const NoBlockingTrace&) = delete;

  static bool active(const ThreadState& thread) noexcept;

 private:
  unsigned& marks_;  // the thread's own; looked up once, since that is not free
};

// In a Java process records go to Java code, which may wait for a lock of Java whose holder waits for one of ours. So
// nobody waits there for ever for the lock of trace or that of captures: after a quarter of a second the trace point is
// dropped, and the capture goes to standard error.
void setJavaProcess(bool is) noexcept;
bool isJavaProcess() noexcept;

// Returns whether the lock was taken.
bool lockWithinLimit(NYXThreadSyncImpl& sync);

// Marks that this thread holds a lock that others wait for without limit: in a Java process its trace points are
// dropped, so that no Java code runs meanwhile.
class NoTraceInJava {
 public:
  NoTraceInJava() noexcept;
  ~NoTraceInJava();
  NoTraceInJava(const NoTraceInJava&) = delete;
  NoTraceInJava& operator=(const NoTraceInJava&) = delete;

  static bool active(const ThreadState& thread) noexcept;

 private:
  unsigned& marks_;
};

// Holds a lock of the diagnostics for a scope. Such a lock is never held while the trace lock is waited for.
class DiagnosticsLock {
 public:
  explicit DiagnosticsLock(NYXThreadSync& sync);
  // For a lock that is not waited for without limit in a Java process: taken() tells whether it is held.
  struct WithinLimit {};
  DiagnosticsLock(NYXThreadSyncImpl& sync, WithinLimit limit);
  ~DiagnosticsLock();
  DiagnosticsLock(const DiagnosticsLock&) = delete;
  DiagnosticsLock& operator=(const DiagnosticsLock&) = delete;

  bool taken() const noexcept { return taken_; }

 private:
  NoBlockingTrace mark_;
  NYXThreadSync& sync_;
  bool taken_;
};

// Marks that this thread is inside one of the log files: opening, rotating and securing it calls functions that
// report failures. Captures and events that are raised meanwhile go to standard error. They could wait for the
// capture lock, whose holder may be waiting for this very file, or write into the middle of a rotation. Nor does the
// thread block on the trace lock.
class InsideLogFile {
 public:
  InsideLogFile() noexcept;
  ~InsideLogFile();
  InsideLogFile(const InsideLogFile&) = delete;
  InsideLogFile& operator=(const InsideLogFile&) = delete;

  static bool active() noexcept;

 private:
  explicit InsideLogFile(ThreadState& thread) noexcept;

  const NoBlockingTrace mark_;
  unsigned& filesEntered_;
};

}  // namespace tessel::internal
