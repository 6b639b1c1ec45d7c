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

  /// @name File security
  /// Paths are in the ANSI code page. Access lists are replaced as a whole, without denying entries: whom a list does
  /// not name, the system's own account among them, has no access. Owner, group and audit list stay.
  /// @{

  /// Restricts a file or directory to the current user and the Administrators, who may do everything.
  /// @param everyoneRead Everyone may read as well, and list a directory.
  /// @param everyoneWrite Everyone may write as well, delete, and change the access list itself.
  /// @throws NYXIOException KTBNV0021 to KTBNV0031.
  static void mkpriv(const std::string& path, bool everyoneRead, bool everyoneWrite);

  /// As mkpriv, and the group "omni" may do everything, too, if there is an account of that name. Everyone may always
  /// read: what the group administers is shared configuration, which each user's programs need.
  /// @throws NYXIOException KTBNV0021 to KTBNV0031, or KTBNV0172 when the group cannot be looked up.
  static void mkGroupOmniWrite(const std::string& path, bool everyoneWrite);

  /// Not supported, and captured as a failure. @throws NYXException always.
  static void mkGroupWrite(const std::string& path, const std::string& group, bool flag);

  /// Not supported: there are no mode bits on this platform. @throws NYXUnsupportedOperationException KTBNV0020,
  /// always.
  static void chmod(const std::string& path, int mode);

  /// Makes the directory and each parent that is missing. Those that it makes get the access list of
  /// mkpriv(dir, everyoneAccess, everyoneAccess), those that exist keep theirs.
  /// @return 0 when the directory exists now, as it does for the empty path; -1 otherwise. Directories that were made
  ///         before the failure stay, and the thread's last error tells why, with trace on too.
  /// @throws NYXIOException what mkpriv throws.
  static int mkdirs(const std::string& path, bool everyoneAccess);

  /// Tests that none of the groups Guests, Users and Everyone has access. A right that an entry allows to one of them
  /// counts unless an entry before it denies that group everything. Other groups are not looked at, however many
  /// users they have, nor are generic rights and the inheritance flags of an entry.
  /// @throws FilePermissionsException KTBNV0145 or KTBNV0146 when the file is open; KTBNV0138 to KTBNV0144 or
  ///         KTBNV0147 when its access list cannot be read or is malformed.
  static void checkFilePermissions(const std::string& path);
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

  // A heap block, as large as the descriptor that the system announced, for the caller to free. Throws
  // FilePermissionsException KTBNV0138, KTBNV0139 or KTBNV0140.
  static const void* getSecurityDescriptor(std::string path);

  static const RasDescriptor rd;
};

}  // namespace tessel
