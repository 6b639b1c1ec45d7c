/// @file
#pragma once

#include <atomic>
#include <iosfwd>
#include <memory>
#include <string>

#include <tessel/Export.h>

namespace tessel {

class NYXException;
class NYXThreadSyncImpl;
class RasDescriptor;

namespace internal::jni {
class JavaSink;
}

/// First-failure data capture: records where and when something unexpected happened, announced in the event log.
///
/// Each capture is a file of its own in the folder "ffdc" of the log directory, private to the user and the
/// administrators: FFDC.YYYYMMDDhhmmss.N.P.log with the local time, the number N of the capture in this process and
/// the process id P. While there is no log directory, or when the file cannot be written, the whole record goes into
/// the event log instead. Captures of several threads are taken one after the other; one that is raised while the
/// same thread takes another, or opens, rotates or secures a log file, goes to standard error, and so does one that
/// waits for the others longer than a quarter of a second in a process whose records go to Java. Any thread; nothing
/// is thrown.
class TESSEL_API FFDC {
 public:
  /// @param probeId one of the PROBE operations, distinct for each place that captures.
  /// @param exception the cause, not owned, or null.
  static void capture(const std::string& className, const std::string& methodName, const std::string& probeId,
                      const NYXException* exception);

  /// With the class name of the descriptor.
  static void capture(const RasDescriptor& descriptor, const std::string& methodName, const std::string& probeId,
                      const NYXException* exception);

  FFDC(const FFDC& other);
  FFDC& operator=(const FFDC& other);
  virtual ~FFDC();

  /// @name Probe ids
  /// "FFDC_" and the three digits.
  /// @{
  static std::string PROBE_001();
  static std::string PROBE_002();
  static std::string PROBE_003();
  static std::string PROBE_004();
  static std::string PROBE_005();
  static std::string PROBE_006();
  static std::string PROBE_007();
  static std::string PROBE_008();
  static std::string PROBE_009();
  static std::string PROBE_010();
  static std::string PROBE_011();
  static std::string PROBE_012();
  static std::string PROBE_013();
  static std::string PROBE_014();
  static std::string PROBE_015();
  static std::string PROBE_016();
  static std::string PROBE_017();
  static std::string PROBE_018();
  static std::string PROBE_019();
  static std::string PROBE_020();
  static std::string PROBE_021();
  static std::string PROBE_022();
  static std::string PROBE_023();
  static std::string PROBE_024();
  static std::string PROBE_025();
  static std::string PROBE_026();
  static std::string PROBE_027();
  static std::string PROBE_028();
  static std::string PROBE_029();
  static std::string PROBE_030();
  static std::string PROBE_031();
  static std::string PROBE_032();
  static std::string PROBE_033();
  static std::string PROBE_034();
  static std::string PROBE_035();
  static std::string PROBE_036();
  static std::string PROBE_037();
  static std::string PROBE_038();
  static std::string PROBE_039();
  static std::string PROBE_040();
  static std::string PROBE_041();
  static std::string PROBE_042();
  static std::string PROBE_043();
  static std::string PROBE_044();
  static std::string PROBE_045();
  static std::string PROBE_046();
  static std::string PROBE_047();
  static std::string PROBE_048();
  static std::string PROBE_049();
  /// @}

 private:
  friend class NLS;
  friend class internal::jni::JavaSink;
  friend struct FFDCTest;

  FFDC();

  static FFDC& getInstance();

  // `count` pointers to std::string follow, each of which may be null.
  static void internalCapture(const std::string& className, const void* object, const std::string& methodName,
                              const std::string& probeId, const NYXException* exception, int count, ...);
  void take(const std::string& name, const std::string& record);
  static bool writeFile(const std::string& path, const std::string& record);
  static std::unique_ptr<std::ofstream> openFFDCFile(const std::string& path);

  static const RasDescriptor rd;

  NYXThreadSyncImpl* lock_;
  bool inProgress_ = false;  // guarded by lock_
  std::atomic<int> captures_{0};
};

}  // namespace tessel
