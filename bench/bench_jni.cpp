// The native peers of the Java benchmarks: native methods of com.kelvo.tessel.bench.Natives.
#include <jni.h>

#include <array>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include <tessel/JavaTraceFileLogHandler.h>
#include <tessel/TraceEntryLogRecord.h>
#include <tessel/tessel.h>

namespace {

const std::string kText(64, 'x');

constexpr std::array kArguments{"first argument", "second argument"};
constexpr const char* kClass = "com.kelvo.tessel.nativ.IPCClient";
constexpr const char* kMethod = "sendMessage";
constexpr const char* kMethodInJava = "sendMessage(Native Method)";

// What prepareTrace makes; one thread, for the process.
struct TraceCall {
  explicit TraceCall(JNIEnv& env) : handler(&env), record(tessel::LogLevel(tessel::LogLevel::FINER), "") {
    record.setSourceClassName(kClass);
    record.setSourceMethodName(kMethod);
    record.setObjectReference(this);
    std::array<std::string, kArguments.size()> texts{kArguments[0], kArguments[1]};
    record.setArguments(texts.size(), texts.data());
    string = globalClass(env, "java/lang/String");
    trace = globalClass(env, "com/kelvo/tessel/ras/Trace");
    entry = env.GetStaticMethodID(trace, "nativeMethodEntry",
                                  "(Ljava/lang/String;JLjava/lang/String;[Ljava/lang/String;)V");
  }

  static jclass globalClass(JNIEnv& env, const char* name) {
    return static_cast<jclass>(env.NewGlobalRef(env.FindClass(name)));
  }

  tessel::JavaTraceFileLogHandler handler;
  tessel::TraceEntryLogRecord record;
  jclass string;
  jclass trace;
  jmethodID entry;
};

TraceCall* prepared = nullptr;

void callTraceOnce(JNIEnv& env, const TraceCall& call) {
  const jstring className = env.NewStringUTF(kClass);
  const jstring method = env.NewStringUTF(kMethodInJava);
  const jobjectArray arguments = env.NewObjectArray(kArguments.size(), call.string, nullptr);
  for (jsize i = 0; i < static_cast<jsize>(kArguments.size()); ++i) {
    const jstring argument = env.NewStringUTF(kArguments[static_cast<std::size_t>(i)]);
    env.SetObjectArrayElement(arguments, i, argument);
    env.DeleteLocalRef(argument);
  }
  env.CallStaticVoidMethod(call.trace, call.entry, className, jlong{1}, method, arguments);
  env.DeleteLocalRef(arguments);
  env.DeleteLocalRef(method);
  env.DeleteLocalRef(className);
}

tessel::IPCClient& clientOf(jlong handle) { return *reinterpret_cast<tessel::IPCClient*>(handle); }

// A failure ends the benchmark with an exception of Java.
template <class Work>
void reported(JNIEnv* env, Work work) {
  std::string message;
  try {
    work();
    return;
  } catch (const tessel::NYXException& exception) {
    message = exception.getMessage();
  } catch (const std::exception& exception) {
    message = exception.what();
  }
  env->ThrowNew(env->FindClass("java/lang/IllegalStateException"), message.c_str());
}

}  // namespace

extern "C" {

JNIEXPORT jlong JNICALL Java_com_kelvo_tessel_bench_Natives_connect(JNIEnv* env, jclass, jstring service) {
  jlong handle = 0;
  reported(env, [&] {
    std::unique_ptr<tessel::IPCClient> client(
        tessel::IPCClient::newInstance(tessel::JNIEnvWrapper(env).getString(service), tessel::NativeProperties()));
    client->connect();
    handle = reinterpret_cast<jlong>(client.release());
  });
  return handle;
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_bench_Natives_exchange(JNIEnv* env, jclass, jlong handle) {
  reported(env, [&] {
    const tessel::IPCMessage reply = clientOf(handle).sendMessage(tessel::IPCMessage(1, kText), -1);
    if (reply.getMessageText().size() != kText.size()) throw std::runtime_error("another reply");
  });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_bench_Natives_disconnect(JNIEnv* env, jclass, jlong handle) {
  reported(env, [&] {
    const std::unique_ptr<tessel::IPCClient> client(&clientOf(handle));
    client->disconnect();
  });
}

JNIEXPORT jbyteArray JNICALL Java_com_kelvo_tessel_bench_Natives_arrayCall(JNIEnv* env, jclass, jbyteArray bytes) {
  std::array<jbyte, 64> copy{};
  const auto length = static_cast<jsize>(copy.size());
  env->GetByteArrayRegion(bytes, 0, length, copy.data());
  const jbyteArray result = env->NewByteArray(length);
  env->SetByteArrayRegion(result, 0, length, copy.data());
  return result;
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_bench_Natives_prepareTrace(JNIEnv* env, jclass) {
  reported(env, [&] { prepared = new TraceCall(*env); });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_bench_Natives_publish(JNIEnv*, jclass, jint times) {
  for (jint i = 0; i < times; ++i) prepared->handler.publish(prepared->record);
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_bench_Natives_callTrace(JNIEnv* env, jclass, jint times) {
  for (jint i = 0; i < times; ++i) callTraceOnce(*env, *prepared);
}

}  // extern "C"
