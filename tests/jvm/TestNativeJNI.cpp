// The native methods for file security, groups and diagnostics: results, exceptions, arguments, trace.
#include "jvm/Jvm.h"

#include <array>
#include <atomic>
#include <list>

#include <tessel/EventLog.h>
#include <tessel/NYXEnvironment.h>
#include <tessel/RasDescriptor.h>

#include "faults/CraftedDescriptor.h"
#include "faults/FileSecurityHooks.h"
#include "jvm/JavaDiagnostics.h"
#include "jvm/NativeMethods.h"
#include "support/CapturedOutput.h"
#include "support/RareError.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

const std::string kIOException = "java.io.IOException: ";
const std::string kPermissionsException = "com.kelvo.tessel.jni.FilePermissionsException: ";
constexpr const char* kMissing = "C:\\no such folder\\f";

std::string nameOf(WELL_KNOWN_SID_TYPE type) {
  std::array<std::byte, SECURITY_MAX_SID_SIZE> sid{};
  std::array<char, 256> name{};
  std::array<char, 256> domain{};
  DWORD size = sid.size();
  DWORD nameSize = name.size();
  DWORD domainSize = domain.size();
  SID_NAME_USE use{};
  EXPECT_TRUE(CreateWellKnownSid(type, nullptr, sid.data(), &size));
  EXPECT_TRUE(LookupAccountSidA(nullptr, sid.data(), name.data(), &nameSize, domain.data(), &domainSize, &use));
  return name.data();
}

class Strings : public JvmTest {
 protected:
  ~Strings() override {
    for (const jstring string : strings_) env.DeleteLocalRef(string);
  }

  jstring string(const std::string& modifiedUtf8) {
    return strings_.emplace_back(env.NewStringUTF(modifiedUtf8.c_str()));
  }

 private:
  std::list<jstring> strings_;
};

// Each with trace off and with everything traced into Java.
class NativeMethods : public Strings, public testing::WithParamInterface<bool> {
 protected:
  // The exception that the call leaves pending, after the trace of the call was looked at.
  template <class Call>
  std::string thrown(const std::string& method, const Call& call) {
    calls::take();
    call();
    const std::string exception = takeException(env);
    expectTrace(method, !exception.empty());
    return exception;
  }

  const JavaDiagnostics diagnostics{GetParam() ? "=ALL" : ""};

 private:
  static void expectTrace(const std::string& method, bool throws) {
    const std::string inClass = "(" + kPrefix + ".NativeJNI, 0, " + method + "(Native Method)";
    Texts kinds;
    for (const std::string& call : calls::take()) {
      if (call.find(inClass) != std::string::npos) kinds.push_back(call.substr(0, call.find('(')));
    }
    if (!GetParam()) {
      EXPECT_EQ(kinds, Texts());
    } else if (throws) {
      EXPECT_EQ(kinds, (Texts{"nativeMethodEntry", "nativeMethodThrowing", "nativeMethodExit"}));
    } else {
      EXPECT_EQ(kinds, (Texts{"nativeMethodEntry", "nativeMethodExit"}));
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Trace, NativeMethods, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "All" : "Off"; });

}  // namespace

TEST_P(NativeMethods, CheckFilePermissionsPassesAPrivateFile) {
  const CraftedDescriptor file(descriptorWith({allow(0x1FFFFF, currentUser())}));
  EXPECT_EQ(thrown("checkFilePermissions", [&] { native::checkFilePermissions(env, string("C:\\f")); }), "");
}

TEST_P(NativeMethods, CheckFilePermissionsRefusesAnOpenFile) {
  const CraftedDescriptor file(descriptorWith({allow(0x1FFFFF, kEveryone)}));
  EXPECT_EQ(thrown("checkFilePermissions", [&] { native::checkFilePermissions(env, string("C:\\f")); }),
            kPermissionsException + shownMessage("KTBNV0145_GROUP_HAS_ACCESS", "Everyone", "C:\\f"));
}

TEST_P(NativeMethods, CheckFilePermissionsRefusesNull) {
  EXPECT_EQ(thrown("checkFilePermissions", [&] { native::checkFilePermissions(env, nullptr); }),
            kPermissionsException + shownMessage("KTBNV0167_FILEPATH_NULL"));
}

TEST_P(NativeMethods, ChmodIsUnsupported) {
  EXPECT_EQ(thrown("chmod", [&] { native::chmod(env, string("C:\\f"), 0600); }),
            "java.lang.UnsupportedOperationException: " + shownMessage("KTBNV0020_CHMOD_UNSUPPORTED"));
}

TEST_P(NativeMethods, NobodyHasSpecialAuthority) {
  EXPECT_EQ(thrown("doesCurrentUserHaveSpecialAuthority",
                   [&] { EXPECT_EQ(native::doesCurrentUserHaveSpecialAuthority(env, string("all")), JNI_FALSE); }),
            "");
}

TEST_P(NativeMethods, MembershipOfAGroupIsToldByItsName) {
  const jstring everyone = string(nameOf(WinWorldSid));
  EXPECT_EQ(thrown("isCurrentUserMemberOfGroup",
                   [&] { EXPECT_EQ(native::isCurrentUserMemberOfGroup(env, everyone), JNI_TRUE); }),
            "");
  EXPECT_EQ(thrown("isCurrentUserMemberOfGroup",
                   [&] { EXPECT_EQ(native::isCurrentUserMemberOfGroup(env, string("no such group")), JNI_FALSE); }),
            "");
}

TEST_P(NativeMethods, AGroupListThatCannotBeReadIsAnIOException) {
  ImportHook<"OpenProcessToken", decltype(OpenProcessToken)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrown("isCurrentUserMemberOfGroup",
                   [&] { EXPECT_EQ(native::isCurrentUserMemberOfGroup(env, string("Users")), JNI_FALSE); }),
            kIOException + shownMessage("KTBNV0129_OPENPROCESSTOKEN_FAILED", kRareText));
}

TEST_P(NativeMethods, MkprivRestrictsAndFailsWithAnIOException) {
  const HandedLists handed;
  EXPECT_EQ(thrown("mkpriv", [&] { native::mkpriv(env, string("C:\\"), JNI_FALSE, JNI_FALSE); }), "");
  ASSERT_EQ(handed.all().size(), 1U);
  EXPECT_EQ(handed.all()[0].path, "C:\\");
  EXPECT_EQ(handed.all()[0].list.entries.size(), 2U);
}

TEST_P(NativeMethods, WhatMkprivCannotDoIsAnIOException) {
  EXPECT_EQ(thrown("mkpriv", [&] { native::mkpriv(env, string(kMissing), JNI_TRUE, JNI_TRUE); }).find(kIOException),
            0U);
  EXPECT_EQ(
      thrown("mkGroupOmniWrite", [&] { native::mkGroupOmniWrite(env, string(kMissing), JNI_TRUE); }).find(kIOException),
      0U);
}

TEST_P(NativeMethods, MkGroupWriteIsAnIOException) {
  EXPECT_EQ(thrown("mkGroupWrite", [&] { native::mkGroupWrite(env, string("C:\\f"), string("g"), JNI_TRUE); }),
            kIOException + "NYXUtils::mkGroupWrite not implemented");
}

TEST_P(NativeMethods, NullIsAnsweredWithTheNameOfTheArgument) {
  const auto nullPointer = [](const std::string& argument) { return "java.lang.NullPointerException: " + argument; };
  EXPECT_EQ(thrown("chmod", [&] { native::chmod(env, nullptr, 0); }), nullPointer("path"));
  EXPECT_EQ(thrown("doesCurrentUserHaveSpecialAuthority",
                   [&] { EXPECT_EQ(native::doesCurrentUserHaveSpecialAuthority(env, nullptr), JNI_FALSE); }),
            nullPointer("authority"));
  EXPECT_EQ(thrown("isCurrentUserMemberOfGroup",
                   [&] { EXPECT_EQ(native::isCurrentUserMemberOfGroup(env, nullptr), JNI_FALSE); }),
            nullPointer("group"));
  EXPECT_EQ(thrown("mkGroupOmniWrite", [&] { native::mkGroupOmniWrite(env, nullptr, JNI_TRUE); }), nullPointer("path"));
  EXPECT_EQ(thrown("mkGroupWrite", [&] { native::mkGroupWrite(env, nullptr, string("g"), JNI_TRUE); }),
            nullPointer("path"));
  EXPECT_EQ(thrown("mkGroupWrite", [&] { native::mkGroupWrite(env, string("p"), nullptr, JNI_TRUE); }),
            nullPointer("group"));
  EXPECT_EQ(thrown("mkpriv", [&] { native::mkpriv(env, nullptr, JNI_TRUE, JNI_TRUE); }), nullPointer("path"));
  EXPECT_EQ(thrown("rasSetLevel", [&] { native::rasSetLevel(env, nullptr); }), nullPointer("traceSpecification"));
  EXPECT_EQ(thrown("rasInitialize", [&] { native::rasInitialize(env, nullptr, string("p")); }),
            nullPointer("logDirectory"));
  EXPECT_EQ(thrown("rasInitialize", [&] { native::rasInitialize(env, string("d"), nullptr); }),
            nullPointer("traceSpecNamePrefix"));
}

TEST_P(NativeMethods, ANameThatTheCodePageLacksIsNeverAnotherFile) {
  const HandedLists handed;
  // Two characters with look-alikes in code pages of the West, one without, and a zero that would end the name.
  const Texts names{"C:\\\xC4\x80", "C:\\\xE2\x88\x9E", "C:\\\xE4\xB8\xAD",
                    "C:\\a\xC0\x80"
                    "b"};
  for (const std::string& name : names) {
    const jstring path = string(name);
    const std::string refused = kIOException + shownMessage("KTBNV0178_NOT_IN_CODE_PAGE", name);
    EXPECT_EQ(thrown("checkFilePermissions", [&] { native::checkFilePermissions(env, path); }), refused);
    EXPECT_EQ(thrown("chmod", [&] { native::chmod(env, path, 0); }), refused);
    EXPECT_EQ(thrown("isCurrentUserMemberOfGroup",
                     [&] { EXPECT_EQ(native::isCurrentUserMemberOfGroup(env, path), JNI_FALSE); }),
              refused);
    EXPECT_EQ(thrown("mkGroupOmniWrite", [&] { native::mkGroupOmniWrite(env, path, JNI_TRUE); }), refused);
    EXPECT_EQ(thrown("mkGroupWrite", [&] { native::mkGroupWrite(env, path, string("g"), JNI_TRUE); }), refused);
    EXPECT_EQ(thrown("mkGroupWrite", [&] { native::mkGroupWrite(env, string("p"), path, JNI_TRUE); }), refused);
    EXPECT_EQ(thrown("mkpriv", [&] { native::mkpriv(env, path, JNI_TRUE, JNI_TRUE); }), refused);
    EXPECT_EQ(thrown("rasInitialize", [&] { native::rasInitialize(env, path, string("p")); }), refused);
  }
  EXPECT_TRUE(handed.all().empty());
}

TEST_P(NativeMethods, ANameGoesToTheSystemInItsCodePage) {
  const HandedLists handed;
  EXPECT_EQ(thrown("mkpriv", [&] { native::mkpriv(env, string("C:\\\xC3\xBC\xE2\x82\xAC"), JNI_TRUE, JNI_TRUE); }), "");
  ASSERT_EQ(handed.all().size(), 1U);
  EXPECT_EQ(handed.all()[0].path, "C:\\\xFC\x80");
}

TEST_P(NativeMethods, OnlyTheCanonicalTrueCounts) {
  const auto entriesFor = [&](jboolean value) {
    const HandedLists handed;
    native::mkpriv(env, string("C:\\"), value, value);
    EXPECT_EQ(takeException(env), "");
    return handed.all().at(0).list.entries.size();
  };
  EXPECT_EQ(entriesFor(0), 2U);
  EXPECT_EQ(entriesFor(2), 2U);
  EXPECT_EQ(entriesFor(255), 2U);
  EXPECT_EQ(entriesFor(1), 3U);
}

TEST_P(NativeMethods, APendingExceptionStays) {
  env.ThrowNew(env.FindClass("java/io/IOException"), "mine");
  native::checkFilePermissions(env, nullptr);
  EXPECT_EQ(takeException(env), "java.io.IOException: mine");
}

TEST_P(NativeMethods, AMissingExceptionClassIsReplacedByTheGeneralOne) {
  Jvm::instance().inWorldWithout("com.kelvo.tessel.jni.FilePermissionsException", [&](JNIEnv& world) {
    native::checkFilePermissions(world, nullptr);
    EXPECT_EQ(takeException(world), kIOException + shownMessage("KTBNV0167_FILEPATH_NULL"));
  });
}

TEST_P(NativeMethods, ShortageOfMemoryNeverLeavesNative) {
  const jstring path = string("C:\\\xE4\xB8\xAD");
  native::chmod(env, path, 0);
  ASSERT_NE(takeException(env), "");
  ImportHook<"malloc", void*(std::size_t)> hook;
  unsigned failures = 0;
  for (unsigned nth = 1;; ++nth) {
    std::atomic<unsigned> calls{0};
    const DWORD self = GetCurrentThreadId();
    hook.replaceWith([&](std::size_t size) -> void* {
      return GetCurrentThreadId() == self && ++calls == nth ? nullptr : hook.callOriginal(size);
    });
    native::chmod(env, path, 0);
    hook.passOn();
    EXPECT_NE(takeException(env), "") << nth;
    if (calls < nth) break;
    ++failures;
  }
  EXPECT_GT(failures, 0U);
}

namespace {

using JavaInitialization = Strings;

}  // namespace

TEST_F(JavaInitialization, SetsTheEnvironmentThePrefixAndTheLogDirectory) {
  const std::string directory = logDirectory().string();
  native::rasInitialize(env, string(directory), string(kPrefix));
  EXPECT_EQ(takeException(env), "");
  EXPECT_EQ(RAS::getEnvironment(), RASEnvironment::JAVA_APP);
  EXPECT_EQ(RAS::getTraceSpecNamePrefix(), kPrefix);
  EXPECT_EQ(RAS::getLogPath(), directory);
  EXPECT_FALSE(RAS::isTraceAvailable());
  RAS::shutdown();
}

TEST_F(JavaInitialization, NeverOverwritesTheLogDirectory) {
  const std::string directory = logDirectory().string();
  native::rasInitialize(env, string("C:\\another"), string("p"));
  EXPECT_EQ(RAS::getLogPath(), directory);
  EXPECT_EQ(NYXEnvironment::getProperty("com.kelvo.tessel.native.logdir"), directory);
  RAS::shutdown();
}

TEST_F(JavaInitialization, ASecondOneIsIgnored) {
  const JavaDiagnostics diagnostics;
  native::rasInitialize(env, string("C:\\another"), string("another.prefix"));
  EXPECT_EQ(takeException(env), "");
  EXPECT_EQ(RAS::getTraceSpecNamePrefix(), kPrefix);
  const RasDescriptor rd("JavaInitialization", "B");
  EventLog::infoNoFormat(rd, "once");
  EXPECT_EQ(calls::take(), Texts{"infoNoFormat(JavaInitialization, once)"});
}

TEST_F(JavaInitialization, AUnitTestMayInitialiseAgainAndSeesEventsOnTheConsole) {
  CapturedOutput output(CapturedOutput::output);
  for (const char* prefix : {"first", "second"}) {
    RAS::initialize(RASEnvironment::UNITTEST, &env, logDirectory().string(), prefix);
    EXPECT_EQ(RAS::getTraceSpecNamePrefix(), prefix);
  }
  const RasDescriptor rd("JavaInitialization", "B");
  EventLog::infoNoFormat(rd, "once");
  RAS::shutdown();
  EventLog::infoNoFormat(rd, "to nobody");
  EXPECT_EQ(calls::take(), Texts{"infoNoFormat(JavaInitialization, once)"});
  EXPECT_EQ(output.text(), "once\n");
}

TEST_F(JavaInitialization, TheLevelMayBeSetBefore) {
  native::rasSetLevel(env, string("=ALL"));
  EXPECT_EQ(takeException(env), "");
  EXPECT_TRUE(RAS::isTraceAvailable());
  EXPECT_EQ(calls::take(), Texts());
  RAS::setLevel("=OFF");
  RAS::shutdown();
}

TEST_F(JavaInitialization, ChangesOfTraceAreNoEventsOfTheirOwn) {
  const JavaDiagnostics diagnostics;
  native::rasSetLevel(env, string(kPrefix + ".NYXUtils=FLOW"));
  EXPECT_EQ(takeException(env), "");
  EXPECT_EQ(calls::take(), Texts());
}

TEST_F(JavaInitialization, TraceGoesToJavaOnceItIsOnAndNoLongerWhenItIsOff) {
  const JavaDiagnostics diagnostics;
  native::doesCurrentUserHaveSpecialAuthority(env, string("a"));
  EXPECT_EQ(calls::take(), Texts());
  native::rasSetLevel(env, string(kPrefix + ".NYXUtils=ALL"));
  native::doesCurrentUserHaveSpecialAuthority(env, string("a"));
  EXPECT_EQ(
      calls::take(),
      (Texts{
          "nativeMethodEntry(" + kPrefix + ".NYXUtils, 0, doesCurrentUserHaveSpecialAuthority(Native Method), [a])",
          "nativeMethodExit(" + kPrefix + ".NYXUtils, 0, doesCurrentUserHaveSpecialAuthority(Native Method), false)"}));
  native::rasSetLevel(env, string("=OFF"));
  native::doesCurrentUserHaveSpecialAuthority(env, string("a"));
  EXPECT_EQ(calls::take(), Texts());
}

TEST_F(JavaInitialization, TheNativeMethodsThemselvesAreTracedByTheirClass) {
  const JavaDiagnostics diagnostics;
  native::rasSetLevel(env, string(kPrefix + ".NativeJNI=FLOW"));
  calls::take();
  native::doesCurrentUserHaveSpecialAuthority(env, string("a"));
  const std::string method = "(" + kPrefix + ".NativeJNI, 0, doesCurrentUserHaveSpecialAuthority(Native Method)";
  EXPECT_EQ(calls::take(), (Texts{"nativeMethodEntry" + method + ", [])", "nativeMethodExit" + method + ", false)"}));
}

TEST_F(JavaInitialization, ACaptureIsAFileAndAnEventOfJava) {
  const JavaDiagnostics diagnostics;
  native::mkGroupWrite(env, string("p"), string("g"), JNI_TRUE);
  EXPECT_NE(takeException(env), "");
  EXPECT_EQ(JavaDiagnostics::captured("Method:"), Texts{"mkGroupWrite"});
  const Texts events = calls::take();
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].find("errorNoFormat(FFDC, KTBNV0084E: "), 0U) << events[0];
}

TEST_F(JavaInitialization, JavaCallsTheMethodsByTheirNames) {
  const jclass clazz = env.FindClass("com/kelvo/tessel/jni/NativeJNI");
  ASSERT_EQ(takeException(env), "");
  const jmethodID method = env.GetStaticMethodID(clazz, "isCurrentUserMemberOfGroup", "(Ljava/lang/String;)Z");
  EXPECT_EQ(env.CallStaticBooleanMethod(clazz, method, string(nameOf(WinWorldSid))), JNI_TRUE);
  EXPECT_EQ(takeException(env), "");
  const jmethodID check = env.GetStaticMethodID(clazz, "checkFilePermissions", "(Ljava/lang/String;)V");
  env.CallStaticVoidMethod(clazz, check, static_cast<jstring>(nullptr));
  EXPECT_EQ(takeException(env), kPermissionsException + shownMessage("KTBNV0167_FILEPATH_NULL"));
  env.DeleteLocalRef(clazz);
}

}  // namespace tessel::test
