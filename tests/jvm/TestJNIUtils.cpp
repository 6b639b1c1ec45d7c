// Environments for threads that Java knows, and for those that it does not.
#include "jvm/Jvm.h"

#include <thread>

#include <tessel/JNIUtils.h>
#include <tessel/NYXException.h>

#include "jvm/ClosedMachine.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Environments = JvmTest;

}  // namespace

TEST_F(Environments, AnAttachedThreadHasItsEnvironmentAlready) {
  JNIEnv* found = nullptr;
  EXPECT_FALSE(JNIUtils::getJNIEnv(Jvm::instance().vm(), found));
  EXPECT_EQ(found, &env);
}

TEST_F(Environments, AThreadThatIsNotAttachedIsAttached) {
  bool attached = false;
  bool again = true;
  JNIEnv* found = nullptr;
  JNIEnv* same = nullptr;
  std::thread([&] {
    attached = JNIUtils::getJNIEnv(Jvm::instance().vm(), found);
    again = JNIUtils::getJNIEnv(Jvm::instance().vm(), same);
    Jvm::instance().vm()->DetachCurrentThread();
  }).join();
  EXPECT_TRUE(attached);
  EXPECT_FALSE(again);
  EXPECT_NE(found, nullptr);
  EXPECT_EQ(found, same);
}

TEST_F(Environments, WithoutAMachineThereIsNone) {
  JNIEnv* found = &env;
  EXPECT_EQ(thrownBy<NYXException>([&] { JNIUtils::getJNIEnv(nullptr, found); }),
            messageText("KTBNV0169_INVALID_JVM_POINTER"));
  EXPECT_EQ(found, nullptr);
}

TEST_F(Environments, AThreadThatCannotBeAttachedHasNone) {
  ClosedMachine machine;
  JNIEnv* found = &env;
  EXPECT_EQ(thrownBy<NYXException>([&] { JNIUtils::getJNIEnv(&machine, found); }),
            messageText("KTBNV0170_ATTACH_CURRENT_THREAD_FAILED"));
  EXPECT_EQ(found, nullptr);
}

}  // namespace tessel::test
