/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

class ProcessSignalActionHandler;
class RasDescriptor;

/// Process, environment, path and identity utilities. Static members only; any thread unless said otherwise.
class TESSEL_API NYXUtils {
 public:
  NYXUtils() = delete;

  /// @name Users and groups
  /// @{

  /// @param groupName account name without domain, compared exactly and with case.
  /// @return whether a group in the process token has that name, deny-only groups included. A group without a name
  ///         never matches, nor does the empty name.
  /// @throws NYXIOException KTBNV0129, KTBNV0130, KTBNV0131 or KTBNV0132 when the token cannot be read.
  static bool isCurrentUserMemberOfGroup(const std::string& groupName);

  /// @return false: there are no special authorities on this platform.
  static bool doesCurrentUserHaveSpecialAuthority(const std::string& authority);

  /// Not supported. @throws NYXException always.
  static std::string getUID();
  /// @}

  /// @name Environment
  /// @{

  /// @return the variable's value, empty when it is not set.
  static std::string getenv(const std::string& name);

  /// @throws NYXException KTBNV0110.
  static void setenv(const std::string& name, const std::string& value);

  /// @return the product's installation root: the variable KTB_PROD, or NYX_PROD when that is empty; may be empty.
  static std::string getKTBProdRoot();

  /// Puts `dir`\\..\\bin64 at the front of PATH, so that libraries there can be loaded. @throws NYXException KTBNV0110.
  static void addBinDirToPath(const std::string& dir);
  /// @}

  /// @name Paths
  /// @{

  /// @return the current directory, at most 260 characters.
  static std::string getCwd();

  /// @return a backslash.
  static std::string separator();

  /// @return the text before the last slash or backslash, empty when there is none.
  static std::string getParent(const std::string& path);

  /// @return the text behind the last slash. A backslash does not count here, unlike in getParent: names that come
  ///         from Java use slashes.
  static std::string getName(const std::string& path);
  /// @}

  /// @name System errors
  /// @{

  /// @return the system's text for the calling thread's last error, without its line end; the number in decimal
  ///         when the system has no text.
  static std::string getLastErrorMessage();
  /// The same for the given number.
  static std::string getLastErrorMessage(int error);
  /// @}

  /// @name Process
  /// @{

  /// Calls the handler for interrupt, termination and console break from now on.
  /// @param handler not owned, must live until replaced; null restores the system's own handling.
  static void handleSignals(ProcessSignalActionHandler* handler);

  /// Does nothing: there are no process sessions on this platform.
  static void newProcessSession();
  /// @}

 private:
  static void SignalHandler(int signal);

  static const RasDescriptor rd;
};

}  // namespace tessel
