/// @file
#pragma once

#include <memory>
#include <string>

#include <tessel/NYXProcess.h>

namespace tessel {

class RasDescriptor;

/// The child process of Windows.
///
/// The command line is formed as programs of the product have always received it:
/// - The program is not looked for in the search path: a name without a folder is one of the current folder.
/// - ".exe" is appended to a program of at most four characters and to one that does not end in ".exe", in exactly
///   these letters: "tool.EXE" becomes "tool.EXE.exe".
/// - Every argument is put in quotation marks. Of the first argument what stands before a colon, and the colon, stay
///   outside: C:\\a b becomes C:"\a b".
/// - Quotation marks and backslashes inside an argument are passed as they are, which the child may read in another
///   way: see quoteArgument(). An argument that begins with a quotation mark is passed unchanged.
///
/// One thread owns the object; stop(), getExitCode() and waitForProcess() may be called by others, too, and by
/// listeners until their reader has ended.
///
/// Of this library's pipes, locks and log files the child inherits its own three pipe ends and nothing else. A file
/// that the C++ run-time has open while a child is started is inherited, and stays open as long as the child runs: of
/// this library's those are properties, catalogues and failure captures while they are read or written. Each
/// registered listener leaves its thread's handle open for the life of the process.
class TESSEL_API NYXProcessImpl : public NYXProcess {
 public:
  /// A child in this process's working directory.
  /// @param argc, argv program and arguments, copied. A null argument is passed as an empty one.
  /// @throws NYXException KTBNV0001 to KTBNV0006 when the pipes cannot be made.
  NYXProcessImpl(int argc, char** const argv);

  /// @param workingDirectory of the child; empty for this process's.
  NYXProcessImpl(int argc, char** const argv, const std::string& workingDirectory);

  /// Ends the readers and closes the pipes; waits for listeners that are being called. Does not stop the child, which
  /// finds its input ended and its output closed. Not to be called inside a listener: that reader's objects are then
  /// left behind.
  ~NYXProcessImpl() override;

  void start() override;
  void stop() override;
  int waitForProcess() override;
  int getExitCode() override;
  void* getInputStream() override;
  void* getOutputStream() override;
  void* getErrorStream() override;
  unsigned long getProcessId() override;
  void registerOutputStreamListener(ProcessStreamReaderListener& listener) override;
  void registerErrorStreamListener(ProcessStreamReaderListener& listener) override;

  /// Ends the child's input: a child that reads to the end goes on. Harmless when called again. Not while another
  /// thread writes to the stream.
  void closeInputStream();

 private:
  struct Child;

  void init(int argc, char** const argv, const std::string& workingDirectory);
  void createPipes();
  static std::string escape(const std::string& arg, bool splitAtColon);

  static const RasDescriptor rd;

  std::string program_;
  std::string commandLine_;  // without the program
  std::string workingDirectory_;
  std::unique_ptr<Child> child_;
};

}  // namespace tessel
