// What a native method makes of the exceptions in it, against an environment that only keeps what is raised.
#include <gtest/gtest.h>

#include <array>
#include <new>
#include <set>
#include <stdexcept>

#include <tessel/FilePermissionsException.h>
#include <tessel/NYXIOException.h>

#include "internal/jni/Guard.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"

namespace tessel::internal::jni {
namespace {

using Texts = std::vector<std::string>;

const RasDescriptor rd("JavaGuard", "B");

constexpr std::array kRows{becomes<NullArgument>("java/lang/NullPointerException"),
                           becomes<FilePermissionsException>("x/Special"), becomes<NYXIOException>("x/Middle")};
constexpr ExceptionTable kTable{kRows, "x/General"};

// Classes are recognised by the address of their name.
struct Env : JNIEnv_ {
  Env() {
    functions = &table;
    table.FindClass = [](JNIEnv* env, const char* name) -> jclass {
      Env& self = *static_cast<Env*>(env);
      EXPECT_FALSE(self.isPending) << name;
      if (self.missing.count(name) == 0) return reinterpret_cast<jclass>(const_cast<char*>(name));
      self.isPending = true;
      self.pending = "no class";
      return nullptr;
    };
    table.ThrowNew = [](JNIEnv* env, jclass clazz, const char* message) -> jint {
      Env& self = *static_cast<Env*>(env);
      self.isPending = true;
      self.pending = std::string(reinterpret_cast<const char*>(clazz)) + ": " + message;
      return JNI_OK;
    };
    table.ExceptionCheck = [](JNIEnv* env) -> jboolean { return static_cast<Env*>(env)->isPending; };
    table.ExceptionClear = [](JNIEnv* env) { static_cast<Env*>(env)->isPending = false; };
    table.DeleteLocalRef = [](JNIEnv*, jobject reference) { EXPECT_NE(reference, nullptr); };
    table.GetStringUTFChars = [](JNIEnv* env, jstring, jboolean*) { return static_cast<Env*>(env)->characters; };
    table.ReleaseStringUTFChars = [](JNIEnv*, jstring, const char*) {};
  }

  JNINativeInterface_ table{};
  std::set<std::string> missing;
  bool isPending = false;
  std::string pending;
  const char* characters = "";
};

class JavaGuard : public testing::Test {
 protected:
  // What is raised for the exception that the body throws.
  template <class Body>
  std::string raised(const Body& body) {
    guarded(&env, {rd, "method", kTable}, [&](NativeCall&) { body(); });
    return std::exchange(env.isPending, false) ? env.pending : "nothing";
  }

  Env env;
};

}  // namespace

TEST_F(JavaGuard, ReturnsWhatTheBodyReturns) {
  EXPECT_EQ(guarded(&env, {rd, "method", kTable}, [](NativeCall&) { return 7; }), 7);
  EXPECT_FALSE(env.isPending);
}

TEST_F(JavaGuard, ReturnsNothingWhenTheBodyThrows) {
  EXPECT_EQ(guarded(&env, {rd, "method", kTable}, [](NativeCall&) -> int { throw NYXException("x"); }), 0);
  EXPECT_FALSE(guarded(&env, {rd, "method", kTable}, [](NativeCall&) -> bool { throw NYXException("x"); }));
  EXPECT_EQ(guarded(&env, {rd, "method", kTable}, [](NativeCall&) -> jobject { throw NYXException("x"); }), nullptr);
}

TEST_F(JavaGuard, RaisesWhatTheTableSays) {
  EXPECT_EQ(raised([] {}), "nothing");
  EXPECT_EQ(raised([] { throw NullArgument("path"); }), "java/lang/NullPointerException: path");
  EXPECT_EQ(raised([] { throw FilePermissionsException("open"); }), "x/Special: open");
  EXPECT_EQ(raised([] { throw NYXIOException("failed"); }), "x/Middle: failed");
}

TEST_F(JavaGuard, WhatNoRowNamesBecomesTheGeneralException) {
  EXPECT_EQ(raised([] { throw NYXException("any"); }), "x/General: any");
  EXPECT_EQ(raised([] { throw std::runtime_error("standard"); }), "x/General: standard");
  EXPECT_EQ(raised([] { throw std::bad_alloc(); }), "x/General: std::bad_alloc");
  EXPECT_EQ(raised([] { throw 1; }), "x/General: unknown native exception");
}

TEST_F(JavaGuard, TheFirstRowThatCoversDecides) {
  struct Derived : FilePermissionsException {
    using FilePermissionsException::FilePermissionsException;
  };
  EXPECT_EQ(raised([] { throw Derived("derived"); }), "x/Special: derived");
}

TEST_F(JavaGuard, AMissingClassIsReplacedByTheNextMoreGeneralOne) {
  env.missing = {"x/Special"};
  EXPECT_EQ(raised([] { throw FilePermissionsException("open"); }), "x/General: open");
  env.missing = {"x/Special", "x/General"};
  EXPECT_EQ(raised([] { throw FilePermissionsException("open"); }), "java/lang/RuntimeException: open");
  env.missing = {"x/Special", "x/General", "java/lang/RuntimeException"};
  EXPECT_EQ(raised([] { throw FilePermissionsException("open"); }), "no class");
}

TEST_F(JavaGuard, AnExceptionOfJavaThatIsPendingStays) {
  guarded(&env, {rd, "method", kTable}, [&](NativeCall&) {
    env.isPending = true;
    env.pending = "of Java";
    throw NYXException("native");
  });
  EXPECT_TRUE(env.isPending);
  EXPECT_EQ(env.pending, "of Java");
}

TEST_F(JavaGuard, MessagesReachJavaAsCharacters) {
  EXPECT_EQ(raised([] { throw NYXException("gr\xFC\\u00df"); }), "x/General: gr\xC3\xBC\xC3\x9F");
}

TEST_F(JavaGuard, ConvertsArguments) {
  const auto string = reinterpret_cast<jstring>(&env);
  const auto textOf = [&](const char* characters) {
    env.characters = characters;
    env.isPending = false;
    return guarded(&env, {rd, "method", kTable}, [&](NativeCall& call) { return call.text(string, "name"); });
  };
  const auto ansiOf = [&](const char* characters) {
    env.characters = characters;
    env.isPending = false;
    return guarded(&env, {rd, "method", kTable}, [&](NativeCall& call) { return call.ansiText(string, "name"); });
  };
  EXPECT_EQ(textOf("gr\xC3\xBC\xC3\x9F"), "gr\xC3\xBC\xC3\x9F");
  EXPECT_EQ(ansiOf("gr\xC3\xBC\xC3\x9F"), "gr\xFC\xDF");
  EXPECT_EQ(ansiOf("\xE4\xB8\xAD"), "");
  EXPECT_EQ(env.pending.find("x/Middle: "), 0U);
  EXPECT_EQ(textOf(nullptr), "");
  EXPECT_EQ(env.pending, "x/General: GetStringUTFChars failed");
}

TEST_F(JavaGuard, ANullArgumentIsNamed) {
  const auto expectNull = [&] {
    EXPECT_TRUE(env.isPending);
    EXPECT_EQ(env.pending, "java/lang/NullPointerException: name");
    env.isPending = false;
  };
  guarded(&env, {rd, "method", kTable}, [](NativeCall& call) { call.text(nullptr, "name"); });
  expectNull();
  guarded(&env, {rd, "method", kTable}, [](NativeCall& call) { call.ansiText(nullptr, "name"); });
  expectNull();
}

TEST_F(JavaGuard, TracesEntryThrowAndExitBeforeItRaises) {
  struct Handler : test::RecordingHandler {
    explicit Handler(const Env& env) : RecordingHandler("JavaGuard"), env_(env) {}
    void publish(LogRecord& record) override {
      EXPECT_FALSE(env_.isPending);
      RecordingHandler::publish(record);
    }
    const Env& env_;
  };
  const Handler handler(env);
  const test::TraceScope trace("JavaGuard=ALL");
  EXPECT_EQ(raised([] { throw NYXException("any"); }), "x/General: any");
  EXPECT_EQ(raised([] { throw std::runtime_error("standard"); }), "x/General: standard");
  EXPECT_EQ(raised([] { throw 1; }), "x/General: unknown native exception");
  EXPECT_EQ(guarded(&env, {rd, "number", kTable}, [](NativeCall&) { return 7; }), 7);
  const std::string thrown = "-  !  method, class NYXException: ";
  EXPECT_EQ(handler.messages(),
            (Texts{"  {  method ", thrown + "any[class NYXException]", "  }  method",                       //
                   "  {  method ", thrown + "standard[class NYXException]", "  }  method",                  //
                   "  {  method ", thrown + "unknown native exception[class NYXException]", "  }  method",  //
                   "  {  number ", "  }  number returns [7] int"}));
}

}  // namespace tessel::internal::jni
