/// @file
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <tessel/Export.h>

namespace tessel {

class FileLock;
class LogRecord;
class NYXThreadSync;
class RasDescriptor;

namespace internal {
class LineFile;
enum class FileContent;
}  // namespace internal

/// A text file that is written line by line, rotates through a fixed number of generations, and that only the right
/// accounts can read.
///
/// A lock file beside the current file, of its name with ".lck", keeps other processes from the same names: a second
/// process gets names that end in ".1". Lines end as Windows lines do. Other programs may read the file meanwhile, but
/// must not change it: while the lock is held, the handler knows the end of the file without asking the system.
///
/// All members may be called from any thread.
class TESSEL_API SecureFileHandler {
 public:
  /// Opens the file, after rotating when it has reached the limit or is not to be continued.
  ///
  /// When the lock cannot be taken for another reason than that it is held, that is traced and the handler works
  /// without.
  ///
  /// @param pattern path; each "%g" becomes the number of the generation. Missing directories are made. Without "%g"
  ///        there is one file only, which is emptied where others are rotated.
  /// @param limit bytes; a file that has reached them is rotated before the next line. Below 1: before every line.
  /// @param count number of generations, the current one included; below 1 counts as 1.
  /// @param append continue an existing file that is below the limit.
  /// @param canRead lets everyone read and write the files and new directories; otherwise the user and the
  ///        administrators only.
  /// @param generation number of the current generation in its name; 0 unless older ones are not kept.
  /// @throws NYXIOException KTBNV0051 when the directory cannot be made, KTBNV0054 when the file cannot be opened,
  ///         KTBNV0055 when no name is usable, KTBNV0056 when a generation cannot be renamed, and what
  ///         NYXUtils::mkpriv() throws. Neither lock nor lock file stay behind.
  SecureFileHandler(const std::string& pattern, int limit, int count, bool append, bool canRead, int generation);
  /// Closes the file, and does what close() does.
  virtual ~SecureFileHandler();
  SecureFileHandler& operator=(const SecureFileHandler& other) = delete;

  /// Writes one line, with one call to the system.
  ///
  /// A rotation that fails, because a generation cannot be renamed or the only file cannot be emptied, loses nothing:
  /// the line goes to the current file, the failure is thrown, and the next line tries again. After every other
  /// failure the line is lost and the next one starts from where the system stands: the file is opened, secured or
  /// continued again, and a line that was written in part is ended first.
  ///
  /// @param text without its last line end; Unicode escapes as in getUtf8EncodedString().
  /// @throws NYXIOException KTBNV0054 when the file cannot be opened, emptied or written, KTBNV0056 when a generation
  ///         cannot be renamed. NYXException, with the text of NYXUtils::mkpriv() or
  ///         NYXUtils::checkFilePermissions(), when the new file cannot be restricted: nothing is written to it.
  void publish(const std::string& text);

  /// Writes the record as it goes to a stream. @throws as the other publish.
  void publish(const LogRecord& record);

  /// Releases the lock and removes its file; harmless when that was done. Lines can still be written, and another
  /// process may then take the same names.
  void close();

  /// @return the text with each escape of a backslash, "u" and exactly four hexadecimal digits replaced by the
  ///         character in UTF-8; two escapes that are a surrogate pair are one character. Everything else, lone
  ///         surrogates included, stays as it is.
  std::string getUtf8EncodedString(std::string text);

  /// @return the character in UTF-8, empty above 0x10FFFF.
  std::string convertToUtf8(unsigned int codePoint);

 private:
  friend struct UniqueNumberTest;
  struct Failure;

  // Has taken nothing yet.
  SecureFileHandler(int limit, int count, bool canRead);
  // The same files without their lock: not used.
  SecureFileHandler(const SecureFileHandler& other);

  static std::string getfileName(const std::string& pattern, int generation, long unique);

  long chooseUnique(const std::string& pattern, int generation, long end);
  bool lock(const std::string& file);
  void openFirst(bool append, Failure& failure);
  bool open(internal::FileContent content, Failure& failure);
  void noteFailure(Failure& failure) const;
  void restrict(bool check);
  void restrictAgain();
  bool rotateFile(Failure& failure) const;
  void rotate(Failure& failure);
  void makeReady(Failure& failure);
  void writeLine(const std::string& text, Failure& failure);

  static const RasDescriptor rd;

  int limit_;
  int count_;
  std::vector<std::string> files_;  // the current file, then ever older generations
  bool canRead_;
  std::unique_ptr<FileLock> fileLock_;  // null without lock; guarded by sync_
  std::string lockFilePath_;            // empty without lock file; guarded by sync_
  std::unique_ptr<NYXThreadSync> sync_;
  std::unique_ptr<internal::LineFile> out_;  // guarded by sync_
};

}  // namespace tessel
