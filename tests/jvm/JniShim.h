// Makes the functions of Java's native interface fail, and counts what the library takes and gives back.
#pragma once

#include <jni.h>

#include <string>
#include <vector>

namespace tessel::test {

// Stands between the library and the environment of one thread for as long as it lives. Only the library's own calls
// are counted and made to fail, not those of the machine's libraries. One at a time.
class JniShim {
 public:
  // How a function that fails leaves the thread: the interface promises a pending exception for most of them.
  enum class Failure { withException, silent };

  explicit JniShim(JNIEnv& env);
  ~JniShim();
  JniShim(const JniShim&) = delete;
  JniShim& operator=(const JniShim&) = delete;

  // The functions that can fail, by name.
  static std::vector<std::string> functions();

  // The nth call of the function from now on fails, counted from one. References and strings are counted from zero.
  void failOn(const std::string& function, unsigned nth, Failure failure);
  // Whether it has.
  bool hasFailed() const;

  // A local reference that the library has given to its caller is no longer counted.
  static void takeOver();

  // What the library has taken and not given back.
  struct Open {
    int localReferences = 0;
    int globalReferences = 0;
    int strings = 0;
    int arrays = 0;
  };
  Open open() const;

 private:
  JNIEnv& env_;
  const JNINativeInterface_* original_;
  JNINativeInterface_ table_;
};

}  // namespace tessel::test
