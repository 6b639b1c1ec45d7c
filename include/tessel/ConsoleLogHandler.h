/// @file
#pragma once

#include <tessel/LogHandler.h>

namespace tessel {

class NYXThreadSync;
class RasDescriptor;

/// Writes message texts from CONFIG up to standard output, from WARNING up to standard error. Only the text: no
/// time, thread or class. Lines of different threads do not mix.
class TESSEL_API ConsoleLogHandler : public LogHandler {
 public:
  /// @throws NYXException KTBNV0008.
  ConsoleLogHandler();
  ~ConsoleLogHandler() override;

  /// Any thread.
  void publish(LogRecord& record) override;

 private:
  static const RasDescriptor rd;

  NYXThreadSync* sync_;
};

}  // namespace tessel
