#include "jvm/Jvm.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <stdexcept>

#include "support/Captures.h"

namespace tessel::test {
namespace {

struct Output {
  std::mutex mutex;
  std::string text;  // guarded by mutex
};

Output& output() {
  static Output& instance = *new Output;
  return instance;
}

// The machine has a run-time of its own: its stream is of no use here.
jint JNICALL keep(void*, const char* format, std::va_list arguments) {
  char text[4096];
  const int length = std::vsnprintf(text, sizeof text, format, arguments);
  if (std::strstr(text, "FATAL")) std::fputs(text, stderr);  // the process ends here
  const std::lock_guard guard(output().mutex);
  output().text += text;
  return length;
}

// The folder that holds server\jvm.dll.
std::string folderOfTheMachine() {
  const char* folder = std::getenv("TESSEL_TEST_JVM");
  if (!folder) throw std::runtime_error("TESSEL_TEST_JVM must name the folder of jvm.dll");
  return folder;
}

auto createJavaVM() {
  const std::string folder = folderOfTheMachine();
  const std::string path = folder + "\\jvm.dll";
  // Its other libraries, the compiler's run-time among them, lie one folder up.
  SetDllDirectoryA((folder + "\\..").c_str());
  const HMODULE library = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!library) throw std::runtime_error(path + " cannot be loaded: " + std::to_string(GetLastError()));
  return reinterpret_cast<decltype(&JNI_CreateJavaVM)>(
      reinterpret_cast<void*>(GetProcAddress(library, "JNI_CreateJavaVM")));
}

std::string pathOfTheLibrary() {
  char path[MAX_PATH];
  GetModuleFileNameA(GetModuleHandleA("tesselnative.dll"), path, MAX_PATH);
  return path;
}

// Native code of a Java class: its argument is the address of a std::function.
JNIEXPORT void JNICALL runBody(JNIEnv* env, jclass, jlong body) {
  (*reinterpret_cast<const std::function<void(JNIEnv&)>*>(body))(*env);
}

void bindBody(JNIEnv& env, jclass clazz, const char* name) {
  std::string method = name;
  char signature[] = "(J)V";
  const JNINativeMethod native{method.data(), signature, reinterpret_cast<void*>(&runBody)};
  ASSERT_EQ(env.RegisterNatives(clazz, &native, 1), JNI_OK);
}

jclass callsClass(JNIEnv& env) { return env.FindClass("com/kelvo/tessel/test/Calls"); }

std::string callForText(const char* method) {
  JNIEnv& env = Jvm::instance().env();
  const jclass clazz = callsClass(env);
  const jmethodID id = env.GetStaticMethodID(clazz, method, "()Ljava/lang/String;");
  const auto result = static_cast<jstring>(env.CallStaticObjectMethod(clazz, id));
  EXPECT_FALSE(env.ExceptionCheck());
  const std::string text = textOf(env, result);
  env.DeleteLocalRef(result);
  env.DeleteLocalRef(clazz);
  return text;
}

// The machine must be able to end: it waits for every thread that is still attached.
class End : public testing::Environment {
 public:
  void TearDown() override { EXPECT_EQ(Jvm::instance().vm()->DestroyJavaVM(), JNI_OK); }
};

const testing::Environment* const end = testing::AddGlobalTestEnvironment(new End);

}  // namespace

Jvm::Jvm() {
  std::string classes = "-Djava.class.path=" TESSEL_JVM_CLASSES;
  std::string library = "-Dtessel.test.library=" + pathOfTheLibrary();
  std::string checks = "-Xcheck:jni";
  std::string signals = "-Xrs";
  std::string hook = "vfprintf";
  JavaVMOption options[] = {{classes.data(), nullptr},
                            {library.data(), nullptr},
                            {checks.data(), nullptr},
                            {signals.data(), nullptr},
                            {hook.data(), reinterpret_cast<void*>(&keep)}};
  JavaVMInitArgs arguments{JNI_VERSION_1_8, static_cast<jint>(std::size(options)), options, JNI_FALSE};
  void* env = nullptr;
  if (createJavaVM()(&vm_, &env, &arguments) != JNI_OK) throw std::runtime_error("no Java virtual machine");
  env_ = static_cast<JNIEnv*>(env);
  const jclass action = env_->FindClass("com/kelvo/tessel/test/Action");
  bindBody(*env_, action, "run");
  env_->DeleteLocalRef(action);
}

Jvm& Jvm::instance() {
  static Jvm& instance = *new Jvm;
  return instance;
}

void Jvm::inWorldWithout(const std::string& missing, const std::function<void(JNIEnv&)>& body) const {
  const jclass loader = env_->FindClass("com/kelvo/tessel/test/Loader");
  const jmethodID gate = env_->GetStaticMethodID(loader, "gate", "(Ljava/lang/String;)Ljava/lang/Class;");
  const jstring name = env_->NewStringUTF(missing.c_str());
  const auto world = static_cast<jclass>(env_->CallStaticObjectMethod(loader, gate, name));
  ASSERT_EQ(takeException(*env_), "");
  bindBody(*env_, world, "enter");
  const jmethodID enter = env_->GetStaticMethodID(world, "enter", "(J)V");
  env_->CallStaticVoidMethod(world, enter, reinterpret_cast<jlong>(&body));
  EXPECT_EQ(takeException(*env_), "");
  for (const jobject reference :
       {static_cast<jobject>(loader), static_cast<jobject>(name), static_cast<jobject>(world)})
    env_->DeleteLocalRef(reference);
}

std::string Jvm::takeOutput() {
  const std::lock_guard guard(output().mutex);
  return std::exchange(output().text, std::string());
}

std::vector<std::string> calls::take() { return linesOf(callForText("take")); }

std::string calls::takeErrors() { return callForText("takeErrors"); }

void calls::throwIn(const std::string& method) {
  JNIEnv& env = Jvm::instance().env();
  const jclass clazz = callsClass(env);
  const jstring name = env.NewStringUTF(method.c_str());
  env.CallStaticVoidMethod(clazz, env.GetStaticMethodID(clazz, "throwIn", "(Ljava/lang/String;)V"), name);
  EXPECT_FALSE(env.ExceptionCheck());
  env.DeleteLocalRef(name);
  env.DeleteLocalRef(clazz);
}

namespace {

void runDuring(const calls::During::Body* body) {
  JNIEnv& env = Jvm::instance().env();
  const jclass clazz = callsClass(env);
  env.CallStaticVoidMethod(clazz, env.GetStaticMethodID(clazz, "runDuring", "(J)V"), reinterpret_cast<jlong>(body));
  EXPECT_FALSE(env.ExceptionCheck());
  env.DeleteLocalRef(clazz);
}

}  // namespace

calls::During::During(Body body) : body_(std::move(body)) { runDuring(&body_); }

calls::During::~During() { runDuring(nullptr); }

// Not with the library's own conversion, which a test may make fail.
std::string textOf(JNIEnv& env, jstring string) {
  const char* characters = env.GetStringUTFChars(string, nullptr);
  std::string text = characters;
  env.ReleaseStringUTFChars(string, characters);
  return text;
}

std::string takeException(JNIEnv& env) {
  const jthrowable thrown = env.ExceptionOccurred();
  if (!thrown) return std::string();
  env.ExceptionClear();
  const jclass clazz = env.GetObjectClass(thrown);
  const jmethodID method = env.GetMethodID(clazz, "toString", "()Ljava/lang/String;");
  const auto text = static_cast<jstring>(env.CallObjectMethod(thrown, method));
  EXPECT_FALSE(env.ExceptionCheck());
  std::string result = textOf(env, text);
  for (const jobject reference :
       {static_cast<jobject>(text), static_cast<jobject>(clazz), static_cast<jobject>(thrown)})
    env.DeleteLocalRef(reference);
  return result;
}

JvmTest::JvmTest() : env(Jvm::instance().env()) {
  calls::take();
  calls::takeErrors();
  Jvm::takeOutput();
}

JvmTest::~JvmTest() {
  calls::throwIn("");
  EXPECT_EQ(takeException(env), "");
  const std::string output = Jvm::takeOutput();
  EXPECT_EQ(output.find("WARNING"), std::string::npos) << output;
  EXPECT_EQ(output.find("FATAL"), std::string::npos) << output;
}

}  // namespace tessel::test
