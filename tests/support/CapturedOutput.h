// What the process writes to standard output or standard error while the object lives.
#pragma once

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include "support/TempFolder.h"

namespace tessel::test {

// Works on the file descriptor: the library has stream objects of its own, the descriptors are the process's.
class CapturedOutput {
 public:
  enum Stream { output = 1, error = 2 };

  explicit CapturedOutput(Stream stream) : descriptor_(stream), stream_(stream == output ? stdout : stderr) {
    std::fflush(stream_);
    saved_ = duplicate(descriptor_);
    std::FILE* file = std::fopen(path().c_str(), "w");
    replace(numberOf(file), descriptor_);
    std::fclose(file);
  }
  ~CapturedOutput() { end(); }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  // Ends the capture. Line ends are those of the program, not of the platform.
  std::string text() {
    end();
    std::ifstream file(path());
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
#if defined(_WIN32)
  static int duplicate(int descriptor) { return _dup(descriptor); }
  static void replace(int from, int to) { _dup2(from, to); }
  static void close(int descriptor) { _close(descriptor); }
  static int numberOf(std::FILE* file) { return _fileno(file); }
#else
  static int duplicate(int descriptor) { return ::dup(descriptor); }
  static void replace(int from, int to) { ::dup2(from, to); }
  static void close(int descriptor) { ::close(descriptor); }
  static int numberOf(std::FILE* file) { return ::fileno(file); }
#endif

  std::string path() const { return (folder_.path() / "output").string(); }

  void end() {
    if (saved_ < 0) return;
    std::fflush(stream_);
    replace(saved_, descriptor_);
    close(saved_);
    saved_ = -1;
  }

  TempFolder folder_;
  int descriptor_;
  std::FILE* stream_;
  int saved_ = -1;
};

}  // namespace tessel::test
