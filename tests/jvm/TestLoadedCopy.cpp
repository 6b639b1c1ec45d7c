// The library loaded and unloaded at run-time, as a Java machine does with the class that binds to it.
#include <windows.h>

#include <stdexcept>
#include <thread>

#include "jvm/IPCBindings.h"
#include "support/Event.h"

namespace tessel::test {
namespace {

// A copy of the library beside the one that this program is linked with.
class LoadedCopy {
 public:
  explicit LoadedCopy(const std::string& path) : module_(LoadLibraryA(path.c_str())) {
    if (!module_) throw std::runtime_error(path + " cannot be loaded: " + std::to_string(GetLastError()));
  }
  ~LoadedCopy() { FreeLibrary(module_); }
  LoadedCopy(const LoadedCopy&) = delete;
  LoadedCopy& operator=(const LoadedCopy&) = delete;

  template <class Function>
  Function* find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

 private:
  HMODULE module_;
};

class LibraryCopies : public IPCBindingsTest {
 protected:
  LibraryCopies() {
    char original[MAX_PATH];
    GetModuleFileNameA(GetModuleHandleA("tesselnative.dll"), original, MAX_PATH);
    CopyFileA(original, path.c_str(), TRUE);
  }

  bool isLoaded() const { return GetModuleHandleA(path.c_str()) != nullptr; }

  const std::string path = folder() + "\\copy-of-tesselnative.dll";
};

}  // namespace

TEST_F(LibraryCopies, AreLoadedUsedAndUnloadedAgainAndAgain) {
  for (int i = 0; i < 10; ++i) {
    {
      const LoadedCopy copy(path);
      auto* const chmod = copy.find<void(JNIEnv*, jclass, jstring, jint)>("Java_com_kelvo_tessel_jni_NativeJNI_chmod");
      ASSERT_NE(chmod, nullptr);
      chmod(&env, nullptr, string("C:\\f"), 0);
      EXPECT_EQ(takeException(env).find("java.lang.UnsupportedOperationException: "), 0U);
    }
    EXPECT_FALSE(isLoaded()) << i;
  }
}

// To set the level marks the thread, in what the library keeps for each one.
TEST_F(LibraryCopies, ServeAThreadThatWasThereBeforeThem) {
  Event attached;
  Event loaded;
  Event used;
  void (*setLevel)(JNIEnv*, jclass, jstring) = nullptr;
  std::string thrown;
  std::thread older([&] {
    const AttachedThread thread;
    attached.set();
    EXPECT_TRUE(loaded.wait());
    setLevel(&thread.env(), nullptr, thread.env().NewStringUTF("="));
    thrown = takeException(thread.env());
    used.set();
  });
  EXPECT_TRUE(attached.wait());
  {
    const LoadedCopy copy(path);
    setLevel = copy.find<void(JNIEnv*, jclass, jstring)>("Java_com_kelvo_tessel_jni_NativeJNI_rasSetLevel");
    loaded.set();
    EXPECT_TRUE(used.wait());
  }
  older.join();
  EXPECT_EQ(thrown, "");
  EXPECT_FALSE(isLoaded());
}

TEST_F(LibraryCopies, StayLoadedWhileTheyServe) {
  const JavaAnswers answers(env, echo);
  const std::string name = uniqueService();
  jlong server = 0;
  {
    const LoadedCopy copy(path);
    auto* const open = copy.find<jlong(JNIEnv*, jobject, jstring, jstring, jint, jstring)>(
        "Java_com_kelvo_tessel_ipc_impl_NativeIPCServer_initialize");
    server = open(&env, answers.object(), string(name), string(folder()), -1, string(""));
    EXPECT_EQ(takeException(env), "");
  }
  EXPECT_TRUE(isLoaded());
  expectServes(name);
  {
    const LoadedCopy copy(path);
    copy.find<void(JNIEnv*, jobject, jlong)>("Java_com_kelvo_tessel_ipc_impl_NativeIPCServer_shutdown")(&env, nullptr,
                                                                                                        server);
    EXPECT_EQ(takeException(env), "");
  }
  EXPECT_FALSE(isLoaded());
}

}  // namespace tessel::test
