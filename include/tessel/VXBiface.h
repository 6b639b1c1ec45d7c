/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

/// Asks a queue manager of the messaging middleware whether it can be reached, without linking the middleware: its
/// client library is loaded at run time.
///
/// One object serves one caller at a time.
class TESSEL_API VXBiface {
 public:
  /// @return an object with no library loaded, owned by the caller.
  static VXBiface* newInstance();

  VXBiface(const VXBiface& other) = delete;
  VXBiface& operator=(const VXBiface& other) = delete;
  virtual ~VXBiface();

  /// Loads the middleware's client library, `<productRoot>\..\bin64\omni`, to which the system adds ".dll". Does
  /// nothing when it is loaded already, whatever the root. What the library itself depends on is looked for in PATH:
  /// see NYXUtils::addBinDirToPath().
  /// @param productRoot the installation directory of the product, as NYXUtils::getKTBProdRoot() gives it.
  /// @throws NYXException KTBNV0154 when the root is empty, KTBNV0151 when the library cannot be loaded, KTBNV0152 or
  ///         KTBNV0153 when it lacks an entry point. No library is loaded then.
  virtual void initialize(const std::string& productRoot) = 0;

  /// Connects to a queue manager. How long that takes is the middleware's business.
  /// @param completionCode, reason what the middleware answered, as it did: its errors are not thrown. Not null.
  /// @throws NYXException KTBNV0156 when no library is loaded.
  virtual void connect(const std::string& queueManagerName, long* completionCode, long* reason) = 0;

  /// Ends the connection. @param completionCode, reason as above.
  /// @throws NYXException KTBNV0157 when no library is loaded.
  virtual void disconnect(long* completionCode, long* reason) = 0;

  /// Frees the library; harmless when none is loaded. A connection is not ended by it.
  /// @throws NYXException KTBNV0158 when the system refuses; the library counts as not loaded all the same.
  virtual void cleanup() = 0;

 protected:
  VXBiface();
};

}  // namespace tessel
