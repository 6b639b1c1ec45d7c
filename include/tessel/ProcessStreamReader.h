/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

class NYXException;
class ProcessStreamReaderListener;
class RasDescriptor;

/// Takes one output stream of a child process to a listener.
class TESSEL_API ProcessStreamReader {
 public:
  ProcessStreamReader(const ProcessStreamReader& other) = delete;
  ProcessStreamReader& operator=(const ProcessStreamReader& other) = delete;
  virtual ~ProcessStreamReader();

  /// Asks the reader to end and to leave in the stream what it has not read yet. Any thread.
  virtual void stop() = 0;

 protected:
  /// @param listener not owned; must outlive the reading.
  explicit ProcessStreamReader(ProcessStreamReaderListener& listener);

  /// Calls the listener. The first exception that it throws is captured, and all are kept from the caller: a reader
  /// that ended would leave the child blocked before a full pipe.
  void deliver(const std::string& data) noexcept;

 private:
  void capture(const NYXException& exception) noexcept;

  static const RasDescriptor rd;

  ProcessStreamReaderListener& listener_;
  bool captured_ = false;
};

}  // namespace tessel
