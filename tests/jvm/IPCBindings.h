// Clients and servers as Java has them, for a test.
#pragma once

#include <functional>
#include <list>
#include <string>

#include "jvm/Jvm.h"
#include "jvm/NativeIPC.h"
#include "support/Diagnostics.h"
#include "support/PipePeers.h"
#include "support/TempFolder.h"

namespace tessel::test {

inline const std::string kIPCException = "com.kelvo.tessel.ipc.IPCException: ";

// An object of the Java class Answers, which answers with the body, on any thread.
class JavaAnswers {
 public:
  using Body = std::function<jbyteArray(JNIEnv&, jbyteArray)>;

  JavaAnswers(JNIEnv& env, Body body);
  ~JavaAnswers() { env_.DeleteLocalRef(object_); }
  JavaAnswers(const JavaAnswers&) = delete;
  JavaAnswers& operator=(const JavaAnswers&) = delete;

  jobject object() const { return object_; }

 private:
  JNIEnv& env_;
  Body body_;
  jobject object_;
};

jbyteArray echo(JNIEnv& env, jbyteArray request);

// The bytes of a Java array that is a native method's result; "null" for none. The reference is deleted.
std::string takeBytes(JNIEnv& env, jbyteArray array);
jbyteArray newBytes(JNIEnv& env, const std::string& bytes);

// What the thread's environment is until the object goes.
class AttachedThread {
 public:
  AttachedThread();
  ~AttachedThread();
  AttachedThread(const AttachedThread&) = delete;
  AttachedThread& operator=(const AttachedThread&) = delete;

  JNIEnv& env() const { return *env_; }

 private:
  JNIEnv* env_ = nullptr;
};

class IPCBindingsTest : public JvmTest {
 protected:
  // The directory that the native methods pass on would otherwise become that of the captures of all tests.
  IPCBindingsTest() { logDirectory(); }
  ~IPCBindingsTest() override;

  jstring string(const std::string& modifiedUtf8) {
    return strings_.emplace_back(env.NewStringUTF(modifiedUtf8.c_str()));
  }

  // With a folder and a properties file that are there. No reference stays behind.
  jlong openClient(const std::string& service);
  jlong openServer(jobject server, const std::string& service, jint maxConnections = -1);

  // The reply; what the request has thrown when it has.
  std::string ask(jlong client, const std::string& text) { return askOn(env, client, text); }
  static std::string askOn(JNIEnv& threadsEnv, jlong client, const std::string& text);

  std::string folder() const { return folder_.path().string(); }
  std::string properties() const { return properties_; }

 private:
  const TempFolder folder_;
  const std::string properties_ = folder_.write("client.properties", "").string();
  std::list<jstring> strings_;
};

}  // namespace tessel::test
