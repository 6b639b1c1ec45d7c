/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

/// Receives what a child process writes.
class TESSEL_API ProcessStreamReaderListener {
 public:
  ProcessStreamReaderListener();
  ProcessStreamReaderListener(const ProcessStreamReaderListener& other);
  ProcessStreamReaderListener& operator=(const ProcessStreamReaderListener& other);
  virtual ~ProcessStreamReaderListener();

  /// Called for each chunk as it was read, on the thread of its reader: a listener of both streams is called by two
  /// threads at once.
  ///
  /// The child waits when it has filled the pipe, until this returns. An exception does not end the reader: the first
  /// one of each stream is captured, and reading goes on. A zero-byte write of the child ends the reader, as the
  /// end of the stream does: nothing is delivered after it.
  /// @param data at most 65,535 bytes, of which those from the first zero byte on are left out. Not cut into lines.
  virtual void processOutput(const std::string& data) = 0;
};

}  // namespace tessel
