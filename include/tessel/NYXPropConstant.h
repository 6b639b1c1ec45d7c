/// @file
#pragma once

#include <atomic>
#include <vector>

#include <tessel/Export.h>
#include <tessel/NativePropertyItem.h>

namespace tessel {

/// Every configuration key that the library and its programs read, with type, default and range. Read one with
/// NativeProperties::getPropertyAsString() and its relatives.
///
/// Immutable; any thread. Integers without a lower bound in their comment accept the full 32-bit range.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): only deleteInstance ends the instance
class TESSEL_API NYXPropConstant {
 public:
  /// @return the one instance, made on first use. Valid until deleteInstance().
  static const NYXPropConstant& getInstance();

  /// Ends the instance; the next getInstance() makes a new one. Nobody may be using it.
  static void deleteInstance();

  /// Copies every item.
  NYXPropConstant(const NYXPropConstant& other);

  /// @return all items in the order of their declaration. They belong to this object.
  std::vector<const NativePropertyItem*> getItems() const;

  const NativePropertyItem agentQMgr;                ///< agentQMgr
  const NativePropertyItem agentQMgrHost;            ///< agentQMgrHost
  const NativePropertyItem agentQMgrRetryInterval;   ///< agentQMgrRetryInterval: 30, from 0
  const NativePropertyItem tesselQueueManager;       ///< tessel.queue.manager
  const NativePropertyItem loggerQMgrRetryInterval;  ///< loggerQMgrRetryInterval: 30, from 0
  const NativePropertyItem tesselQueueManagerHost;   ///< tessel.queue.manager.host
  const NativePropertyItem outputLogFiles;           ///< outputLogFiles: generations of the event log, 5, from 1
  const NativePropertyItem outputLogSize;            ///< outputLogSize: size of each in MB, 1, from 1
  const NativePropertyItem trace;                    ///< trace: the trace specification to start with
  const NativePropertyItem traceFiles;               ///< traceFiles: generations of the trace, 5, from 1
  const NativePropertyItem traceSize;                ///< traceSize: size of each in MB, 20, from 1
  const NativePropertyItem adminGroup;               ///< adminGroup
  const NativePropertyItem maxRestartCount;          ///< maxRestartCount: 4, from 0
  const NativePropertyItem maxRestartInterval;       ///< maxRestartInterval: 120, from 0
  /// maxRestartDelay: -1. Unlike the other settings of restarts it may be negative.
  const NativePropertyItem maxRestartDelay;
  const NativePropertyItem processControllerStatus;         ///< processControllerStatus: true
  const NativePropertyItem lastApplicationExitCode;         ///< lastApplicationExitCode: 0
  const NativePropertyItem queueManagerStatus;              ///< queueManagerStatus: true
  const NativePropertyItem queueManagerLastError;           ///< queueManagerLastError: 0
  const NativePropertyItem currentApplicationRestartCount;  ///< currentApplicationRestartCount: 0
  const NativePropertyItem totalApplicationRestartCount;    ///< totalApplicationRestartCount: 0

 private:
  friend struct NYXPropConstantTest;

  NYXPropConstant();
  virtual ~NYXPropConstant();
  // Never to be used: captured as a failure and refused.
  NYXPropConstant& operator=(const NYXPropConstant& other);

  static std::atomic<const NYXPropConstant*> impl;
};

}  // namespace tessel
