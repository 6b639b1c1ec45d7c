/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

class ProcessStreamReaderListener;

/// A child process whose standard input, output and error are pipes to this process. Made as an NYXProcessImpl, which
/// says how the command line is formed.
class TESSEL_API NYXProcess {
 public:
  NYXProcess(const NYXProcess& other) = delete;
  NYXProcess& operator=(const NYXProcess& other) = delete;
  virtual ~NYXProcess();

  /// Launches the child. Once in the life of the object; again after it failed.
  /// @throws NYXException KTBNV0007 when the system refuses, KTBNV0179 when the child was started already.
  virtual void start() = 0;

  /// Terminates the child at once with exit code 0 and waits up to five seconds until it is gone. Its own children go
  /// on. Harmless when nothing runs. Any thread, also inside a listener.
  ///
  /// A child that cannot be terminated, or is not gone by then, is given up: its exit code is 259 from then on, unless
  /// another thread waits for it.
  virtual void stop() = 0;

  /// Waits without limit until the child has ended, then until the readers of its output have delivered everything.
  ///
  /// A grandchild that inherited a stream keeps its reader waiting, too, unless the child was stopped: then readers
  /// deliver what is in the pipe, and end. Inside a listener of this object the readers are not waited for: two
  /// listeners would wait for each other.
  /// @return the exit code; -1 before start().
  virtual int waitForProcess() = 0;

  /// @return the exit code, 259 while the child runs, -1 before start().
  virtual int getExitCode() = 0;

  /// @name Streams
  /// The parent's ends as system handles. They stay this object's own: never close what these return.
  /// @{

  /// @return where the child's input is written to; null after NYXProcessImpl::closeInputStream().
  virtual void* getInputStream() = 0;
  /// @return where the child's output is read from, unless a listener is registered.
  virtual void* getOutputStream() = 0;
  /// @return where the child's error output is read from, unless a listener is registered.
  virtual void* getErrorStream() = 0;
  /// @}

  /// @return the system's number of the child, also of one that has ended; 0 before start().
  virtual unsigned long getProcessId() = 0;

  /// Lets a thread read the child's output and deliver it, before or after start(). A reader registered before is
  /// stopped first: what it has read is delivered to its own listener, everything after that to the new one. A reader
  /// whose read cannot be cancelled for two seconds is given up: what it reads later is lost.
  ///
  /// Inside a listener only its own stream may be given another listener, and only by the one that was registered last;
  /// the old reader then ends after that call.
  /// @param listener not owned; must live until waitForProcess() has returned, it was replaced, or the object is gone.
  /// @throws NYXException KTBNV0013 when the thread cannot be made; no reader is left then.
  virtual void registerOutputStreamListener(ProcessStreamReaderListener& listener) = 0;

  /// The same for the child's error output.
  virtual void registerErrorStreamListener(ProcessStreamReaderListener& listener) = 0;

  /// @return the system's number of the calling process.
  static unsigned long getCurrentProcessId();

  /// Quotes an argument so that a program which takes its command line apart as the C run-time does gets it back
  /// unchanged: backslashes are doubled before a quotation mark and at the end, quotation marks get a backslash.
  ///
  /// NYXProcessImpl passes what begins with a quotation mark as it is, and so passes the result.
  static std::string quoteArgument(const std::string& argument);

 protected:
  NYXProcess();
};

}  // namespace tessel
