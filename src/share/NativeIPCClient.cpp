// The native methods of com.kelvo.tessel.ipc.impl.NativeIPCClient.
#include <jni.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include <tessel/IPCClient.h>
#include <tessel/IPCNotAvailableForUserException.h>
#include <tessel/IPCNotFoundException.h>
#include <tessel/IPCTimeoutException.h>
#include <tessel/NYXThread.h>

#include "internal/Bundles.h"
#include "internal/jni/ByteArrays.h"
#include "internal/jni/Guard.h"
#include "internal/jni/HandleTable.h"
#include "internal/jni/LogDirectory.h"

namespace tessel {
namespace {

using internal::jni::becomes;
using internal::jni::guarded;
using internal::jni::NativeCall;

const RasDescriptor rd("com.kelvo.tessel.ipc.IPCClient", internal::kMessages);

constexpr const char* kGeneral = "com/kelvo/tessel/ipc/IPCException";

constexpr internal::jni::ExceptionRow kConnectRows[] = {
    becomes<IPCNotFoundException>("com/kelvo/tessel/ipc/IPCNotFoundException"),
    becomes<IPCNotAvailableForUserException>("com/kelvo/tessel/ipc/IPCNotAvailableForUserException"),
};
constexpr internal::jni::ExceptionRow kExchangeRows[] = {
    becomes<IPCTimeoutException>("com/kelvo/tessel/ipc/IPCTimeoutException"),
    becomes<internal::jni::NullArgument>("java/lang/NullPointerException"),
};
constexpr internal::jni::ExceptionTable kConnecting{kConnectRows, kGeneral};
constexpr internal::jni::ExceptionTable kExchanging{kExchangeRows, kGeneral};
constexpr internal::jni::ExceptionTable kClosing{{}, kGeneral};

// A client with everybody who uses it right now: who leaves last deletes it.
struct OpenClient {
  explicit OpenClient(std::unique_ptr<IPCClient> client) : object(std::move(client)) {}
  // The client's own destructor leaves the pipe open.
  ~OpenClient() {
    try {
      object->disconnect();
    } catch (...) {  // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
  }
  OpenClient(const OpenClient&) = delete;
  OpenClient& operator=(const OpenClient&) = delete;

  IPCMessage ask(const IPCMessage& request, long timeout) {
    const Exchange exchange(*this);
    return object->sendMessage(request, timeout);
  }

  const std::unique_ptr<IPCClient> object;

 private:
  // One at a time. A Java log handler that is given the trace of a request and sends another one by the same client is
  // refused: its thread would wait for itself. A mistake of the Java code, so the text is not translated.
  class Exchange {
   public:
    explicit Exchange(OpenClient& client) : client_(client) {
      const unsigned long self = NYXThread::getCurrentThreadId();
      if (client_.thread_ == self) throw NYXException("the client is busy with a request of this thread");
      client_.mutex_.lock();
      client_.thread_ = self;
    }
    ~Exchange() {
      client_.thread_ = 0;
      client_.mutex_.unlock();
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

   private:
    OpenClient& client_;
  };

  std::mutex mutex_;  // not a monitor, since each of those leaves a handle behind
  std::atomic<unsigned long> thread_{0};
};

using Clients = internal::jni::HandleTable<IPCClient, OpenClient>;

Clients& clients() {
  static Clients& instance = *new Clients;
  return instance;
}

// The server echoes the id and nobody looks at it: Java passes none, so any number will do.
std::int32_t messageId(jobject object) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  return static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(object));
}

// The text of a request. Where Java says why it cannot be read, that is what its caller sees.
std::string textOf(JNIEnv& env, jbyteArray request) {
  if (!request) throw internal::jni::NullArgument("request");
  std::string text;
  if (internal::jni::readBytes(env, request, IPCMessage::MAX_MESSAGE_TEXT_LEN, text)) return text;
  throw NYXException("GetByteArrayRegion failed");
}

// As the one above, for a reply on its way to Java.
jbyteArray arrayOf(JNIEnv& env, const std::string& reply) {
  if (const jbyteArray array = internal::jni::newByteArray(env, reply).release()) return array;
  throw NYXException("NewByteArray failed");
}

// As the Java side knows replies.
std::string upToZeroByte(const std::string& text) { return text.substr(0, text.find('\0')); }

// What the server answered, for those who expect no failure.
std::string textOf(const IPCMessage& reply) {
  switch (reply.getMessageStatus()) {
    case IPCMessage::MessageStatus::TIMEOUT:
      throw IPCTimeoutException(reply.getMessageText());
    case IPCMessage::MessageStatus::EXCEPTION:
      throw NYXException(reply.getMessageText());
    default:
      return upToZeroByte(reply.getMessageText());
  }
}

}  // namespace
}  // namespace tessel

using namespace tessel;  // NOLINT(google-build-using-namespace): the names below are Java's, not ours

extern "C" {

JNIEXPORT jlong JNICALL Java_com_kelvo_tessel_ipc_impl_NativeIPCClient_initialize(JNIEnv* env, jobject,
                                                                                  jstring serviceName,
                                                                                  jstring directory,
                                                                                  jstring propertiesFile) {
  return guarded(env, {rd, "initialize", kConnecting}, [&](NativeCall& call) {
    const std::string service = call.text(serviceName, "serviceName");
    const std::string folder = call.ansiText(directory, "directory");
    const std::string file = call.ansiText(propertiesFile, "propertiesFile");
    internal::jni::offerLogDirectory(folder);
    NativeProperties properties;
    properties.loadProperties(file);
    const auto client =
        std::make_shared<OpenClient>(clients().newObject([&] { return IPCClient::newInstance(service, properties); }));
    client->object->connect();
    return clients().add(client);
  });
}

JNIEXPORT jbyteArray JNICALL Java_com_kelvo_tessel_ipc_impl_NativeIPCClient_sendMessage(JNIEnv* env, jobject object,
                                                                                        jlong handle,
                                                                                        jbyteArray request,
                                                                                        jint timeout) {
  return guarded(env, {rd, "sendMessage", kExchanging}, [&](NativeCall& call) {
    const IPCMessage message(messageId(object), IPCMessage::STATUS_SUCCESS, textOf(call.env, request));
    return arrayOf(call.env, textOf(clients().find(handle)->ask(message, timeout)));
  });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_ipc_impl_NativeIPCClient_shutdown(JNIEnv* env, jobject, jlong handle) {
  guarded(env, {rd, "shutdown", kClosing}, [&](NativeCall& call) {
    if (handle == 0) {
      call.trace.data(TraceLevel::MODERATE, "shutdown passed NULL nativeId, ignoring");
    } else {
      clients().take(handle)->object->cancel();
    }
  });
}

}  // extern "C"
