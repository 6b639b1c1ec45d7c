/// @file
#pragma once

#include <tessel/Export.h>

namespace tessel {

class RasDescriptor;

/// What a process does when it is signalled; installed by NYXUtils::handleSignals.
class TESSEL_API ProcessSignalActionHandler {
 public:
  ProcessSignalActionHandler();
  ProcessSignalActionHandler(const ProcessSignalActionHandler& other);
  ProcessSignalActionHandler& operator=(const ProcessSignalActionHandler& other);
  virtual ~ProcessSignalActionHandler();

  /// Called for each signal, on a thread that the system makes for it. Calls defaultAction unless overridden.
  virtual void action(int signal);

 protected:
  /// Traces "Received signal: " and the number.
  void defaultAction(int signal);

 private:
  static const RasDescriptor rd;
};

}  // namespace tessel
