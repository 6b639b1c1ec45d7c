#include "jvm/IPCBindings.h"

namespace tessel::test {
namespace {

JNIEXPORT jbyteArray JNICALL answer(JNIEnv* env, jclass, jlong body, jbyteArray message) {
  return (*reinterpret_cast<const JavaAnswers::Body*>(body))(*env, message);
}

class LocalStrings {
 public:
  LocalStrings(JNIEnv& env, const std::vector<std::string>& texts) : env_(env) {
    for (const std::string& text : texts) strings_.push_back(env.NewStringUTF(text.c_str()));
  }
  // Also while an exception is pending.
  ~LocalStrings() {
    for (const jstring string : strings_) env_.DeleteLocalRef(string);
  }
  LocalStrings(const LocalStrings&) = delete;
  LocalStrings& operator=(const LocalStrings&) = delete;

  jstring operator[](std::size_t index) const { return strings_.at(index); }

 private:
  JNIEnv& env_;
  std::vector<jstring> strings_;
};

}  // namespace

JavaAnswers::JavaAnswers(JNIEnv& env, Body body) : env_(env), body_(std::move(body)) {
  const jclass clazz = env.FindClass("com/kelvo/tessel/test/Answers");
  char name[] = "answer";
  char signature[] = "(J[B)[B";
  const JNINativeMethod native{name, signature, reinterpret_cast<void*>(&answer)};
  EXPECT_EQ(env.RegisterNatives(clazz, &native, 1), JNI_OK);
  object_ = env.NewObject(clazz, env.GetMethodID(clazz, "<init>", "(J)V"), reinterpret_cast<jlong>(&body_));
  EXPECT_EQ(takeException(env), "");
  env.DeleteLocalRef(clazz);
}

jbyteArray echo(JNIEnv&, jbyteArray request) { return request; }

jbyteArray newBytes(JNIEnv& env, const std::string& bytes) {
  const auto length = static_cast<jsize>(bytes.size());
  const jbyteArray array = env.NewByteArray(length);
  env.SetByteArrayRegion(array, 0, length, reinterpret_cast<const jbyte*>(bytes.data()));
  return array;
}

std::string takeBytes(JNIEnv& env, jbyteArray array) {
  if (!array) return "null";
  const jsize length = env.GetArrayLength(array);
  std::string bytes(static_cast<std::size_t>(length), '\0');
  env.GetByteArrayRegion(array, 0, length, reinterpret_cast<jbyte*>(bytes.data()));
  env.DeleteLocalRef(array);
  return bytes;
}

AttachedThread::AttachedThread() {
  void* env = nullptr;
  EXPECT_EQ(Jvm::instance().vm()->AttachCurrentThread(&env, nullptr), JNI_OK);
  env_ = static_cast<JNIEnv*>(env);
}

AttachedThread::~AttachedThread() { Jvm::instance().vm()->DetachCurrentThread(); }

IPCBindingsTest::~IPCBindingsTest() {
  for (const jstring string : strings_) env.DeleteLocalRef(string);
}

jlong IPCBindingsTest::openClient(const std::string& service) {
  const LocalStrings texts(env, {service, folder(), properties_});
  return native::openClient(env, texts[0], texts[1], texts[2]);
}

jlong IPCBindingsTest::openServer(jobject server, const std::string& service, jint maxConnections) {
  const LocalStrings texts(env, {service, folder(), ""});
  return native::openServer(env, server, texts[0], texts[1], texts[2], maxConnections);
}

std::string IPCBindingsTest::askOn(JNIEnv& threadsEnv, jlong client, const std::string& text) {
  const jbyteArray request = newBytes(threadsEnv, text);
  const jbyteArray reply = native::sendMessage(threadsEnv, request, client, request);
  const std::string exception = takeException(threadsEnv);
  threadsEnv.DeleteLocalRef(request);
  if (exception.empty()) return takeBytes(threadsEnv, reply);
  EXPECT_EQ(reply, nullptr);
  return exception;
}

}  // namespace tessel::test
