// How long the thread that serves a client stays attached to the Java machine.
#include <atomic>
#include <chrono>
#include <set>
#include <string>
#include <thread>

#include "jvm/IPCBindings.h"
#include "support/RawPipe.h"

namespace tessel::test {
namespace {

// A server whose Java object answers with what it gets, and the Java threads that it was called on.
class KeptAttachment : public IPCBindingsTest {
 protected:
  KeptAttachment() {
    const jclass clazz = env.FindClass("java/lang/Thread");
    thread_ = static_cast<jclass>(env.NewGlobalRef(clazz));
    env.DeleteLocalRef(clazz);
    currentThread_ = env.GetStaticMethodID(thread_, "currentThread", "()Ljava/lang/Thread;");
    getId_ = env.GetMethodID(thread_, "getId", "()J");
    isAlive_ = env.GetMethodID(thread_, "isAlive", "()Z");
    server_ = openServer(object_.object(), name_);
  }
  ~KeptAttachment() override {
    native::closeServer(env, server_);
    env.DeleteGlobalRef(thread_);
    if (last_) env.DeleteGlobalRef(last_);
  }

  const std::string& name() const { return name_; }

  // Every attachment makes a Java thread of its own.
  std::size_t attachments() const { return threads_.size(); }

  // The object answers nothing until it is let go.
  void hold() { held_ = true; }
  void letGo() { held_ = false; }

  // Returns once so many requests have been answered, though not sent.
  void awaitAnswers(unsigned count) const {
    while (answers_ < count) sleep();
  }

  // Returns once the thread of the last request is attached no more.
  void awaitDetached() const {
    while (checked(env, env.CallBooleanMethod(last_, isAlive_))) sleep();
  }

 private:
  static void sleep() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

  // What the call has returned without an exception.
  template <class Result>
  static Result checked(JNIEnv& threadsEnv, Result result) {
    EXPECT_FALSE(threadsEnv.ExceptionCheck());
    return result;
  }

  jbyteArray answer(JNIEnv& threadsEnv, jbyteArray request) {
    while (held_) sleep();
    const jobject thread = checked(threadsEnv, threadsEnv.CallStaticObjectMethod(thread_, currentThread_));
    threads_.insert(checked(threadsEnv, threadsEnv.CallLongMethod(thread, getId_)));
    if (last_) threadsEnv.DeleteGlobalRef(last_);
    last_ = threadsEnv.NewGlobalRef(thread);
    ++answers_;
    return echo(threadsEnv, request);
  }

  const std::string name_ = uniqueService();
  jclass thread_ = nullptr;
  jmethodID currentThread_ = nullptr;
  jmethodID getId_ = nullptr;
  jmethodID isAlive_ = nullptr;
  jobject last_ = nullptr;  // written by the worker before its reply, read after it
  std::set<jlong> threads_;
  std::atomic<bool> held_{false};
  std::atomic<unsigned> answers_{0};
  const JavaAnswers object_{env,
                            [this](JNIEnv& threadsEnv, jbyteArray request) { return answer(threadsEnv, request); }};
  jlong server_ = 0;
};

}  // namespace

TEST_F(KeptAttachment, LastsWhileRequestsFollowEachOther) {
  constexpr std::uint32_t kRequests = 10;
  RawClient client(name());
  hold();
  for (std::uint32_t id = 1; id <= kRequests; ++id) ASSERT_TRUE(client.write(wireMessage(id, 0, "text")));
  letGo();
  for (std::uint32_t id = 1; id <= kRequests; ++id) EXPECT_EQ(client.read(), wireMessage(id, 0, "text"));
  EXPECT_EQ(attachments(), 1U);
}

// The machine can end between two of them.
TEST_F(KeptAttachment, EndsWhenThePipeMayBeFullHoweverCloselyRequestsFollowEachOther) {
  constexpr int kRequests = 200;
  constexpr std::size_t kRepliesInAPipe = 1044 / 24;
  TestClient client(name());
  for (int i = 0; i < kRequests; ++i) EXPECT_EQ(shown(client.ask(i, "text")), shown(IPCMessage(i, 0, "text")));
  EXPECT_GE(attachments(), kRequests / kRepliesInAPipe);
}

TEST_F(KeptAttachment, EndsBeforeTheThreadWaitsForARequest) {
  TestClient client(name());
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(shown(client.ask(i, "text")), shown(IPCMessage(i, 0, "text")));
    awaitDetached();
    EXPECT_EQ(attachments(), static_cast<std::size_t>(i));
  }
}

TEST_F(KeptAttachment, EndsWithTheClient) {
  {
    TestClient client(name());
    EXPECT_EQ(shown(client.ask(1, "text")), shown(IPCMessage(1, 0, "text")));
  }
  awaitDetached();
}

// The pipe has room for 1044 bytes that its client has not read: for two such replies, not for three.
TEST_F(KeptAttachment, EndsBeforeAReplyThatItsClientMayNotRead) {
  constexpr std::uint32_t kRequests = 3;
  const std::string text(450, 'x');
  RawClient client(name());
  for (std::uint32_t id = 1; id <= kRequests; ++id) ASSERT_TRUE(client.write(wireMessage(id, 0, text)));
  awaitAnswers(kRequests);
  awaitDetached();
  for (std::uint32_t id = 1; id <= kRequests; ++id) EXPECT_EQ(client.read(), wireMessage(id, 0, text));
  EXPECT_EQ(client.ask(wireMessage(4, 0, "more")), wireMessage(4, 0, "more"));
}

}  // namespace tessel::test
