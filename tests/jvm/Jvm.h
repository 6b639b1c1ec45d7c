// A real Java virtual machine in the test program, with every check of the interface switched on.
#pragma once

#include <jni.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tessel::test {

// One machine for all tests, made by the first one that asks; there can be no second one in a process.
class Jvm {
 public:
  static Jvm& instance();

  JavaVM* vm() const { return vm_; }
  // That of the tests' thread, which is attached for good.
  JNIEnv& env() const { return *env_; }

  // Runs the body as native code of a Java class in whose world the class, or "class#method", is missing, by its dotted
  // name; the empty text for nothing.
  void inWorldWithout(const std::string& missing, const std::function<void(JNIEnv&)>& body) const;

  // What the machine has printed since the last time, its warnings about wrong use of the interface among it.
  static std::string takeOutput();

 private:
  Jvm();

  JavaVM* vm_ = nullptr;
  JNIEnv* env_ = nullptr;
};

// The Java class Calls.
namespace calls {
std::vector<std::string> take();
std::string takeErrors();
void throwIn(const std::string& method);

// While it lives, the body runs during each call from Java's side, on the thread of the call.
class During {
 public:
  using Body = std::function<void(JNIEnv&)>;

  explicit During(Body body);
  ~During();
  During(const During&) = delete;
  During& operator=(const During&) = delete;

 private:
  Body body_;
};
}  // namespace calls

// The text of a Java string.
std::string textOf(JNIEnv& env, jstring string);

// "class: message" of the pending exception, which is cleared; empty when there is none.
std::string takeException(JNIEnv& env);

// Nothing that a test starts with is left over from another, and nothing stays behind.
class JvmTest : public testing::Test {
 protected:
  JvmTest();
  ~JvmTest() override;

  JNIEnv& env;
};

}  // namespace tessel::test
