// The queue-manager interface when the system refuses one of its calls.
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include <tessel/NYXException.h>
#include <tessel/VXBiface.h>

#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/QueueManagers.h"
#include "support/RareError.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using AddressHook = ImportHook<"GetProcAddress", decltype(GetProcAddress)>;

class QueueManagerFaults : public testing::Test {
 protected:
  // What the system opens for good at the first failure of a process.
  static void SetUpTestSuite() {
    thrownBy<NYXException>([] { std::unique_ptr<VXBiface>(VXBiface::newInstance())->initialize(""); });
  }
  ~QueueManagerFaults() override {
    queues_.reset();
    EXPECT_EQ(GetModuleHandleA("omni.dll"), nullptr);
    EXPECT_EQ(handles_.growth(), 0);
  }

  std::string initializeFailure() {
    return thrownBy<NYXException>([&] { queues_->initialize(productBeside("complete")); });
  }

  // The entry point of that name is not found.
  std::string failureWithout(const std::string& name) {
    AddressHook hook;
    hook.replaceWith([&](HMODULE module, LPCSTR wanted) -> FARPROC {
      if (wanted != name) return hook.callOriginal(module, wanted);
      SetLastError(kRareError);
      return nullptr;
    });
    return initializeFailure();
  }

  const HandleBaseline handles_;
  std::unique_ptr<VXBiface> queues_{VXBiface::newInstance()};
  const std::string path_ = libraryBeside("complete");
};

TEST_F(QueueManagerFaults, ALibraryThatCannotBeLoadedIsReported) {
  {
    ImportHook<"LoadLibraryA", decltype(LoadLibraryA)> hook;
    hook.failOnce(kRareError);
    EXPECT_EQ(initializeFailure(), messageText("KTBNV0151_LOADLIBRARY_ERROR", path_, kRareText));
    EXPECT_EQ(hook.calls(), 1U);
  }
  queues_->initialize(productBeside("complete"));
}

TEST_F(QueueManagerFaults, AMissingConnectIsReported) {
  EXPECT_EQ(failureWithout("ZXCONN"), messageText("KTBNV0152_GETPROCADDRESS_ZXCONN_ERROR", path_, kRareText));
  EXPECT_EQ(GetModuleHandleA("omni.dll"), nullptr);
  queues_->initialize(productBeside("complete"));
}

TEST_F(QueueManagerFaults, AMissingDisconnectIsReported) {
  EXPECT_EQ(failureWithout("ZXDISC"), messageText("KTBNV0153_GETPROCADDRESS_ZXDISC_ERROR", path_, kRareText));
  EXPECT_EQ(GetModuleHandleA("omni.dll"), nullptr);
  queues_->initialize(productBeside("complete"));
}

TEST_F(QueueManagerFaults, ALibraryThatCannotBeFreedIsReportedAndGivenUp) {
  queues_->initialize(productBeside("complete"));
  const HMODULE left = GetModuleHandleA("omni.dll");
  {
    ImportHook<"FreeLibrary", decltype(FreeLibrary)> hook;
    hook.failOnce(kRareError);
    EXPECT_EQ(thrownBy<NYXException>([&] { queues_->cleanup(); }),
              messageText("KTBNV0158_FREELIBRARY_ERROR", path_, kRareText));
    queues_->cleanup();
    EXPECT_EQ(hook.calls(), 1U);
  }
  long code = 0;
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->connect("x", &code, &code); }),
            messageText("KTBNV0156_ZXCONN_NOT_INITIALIZED"));
  EXPECT_NE(FreeLibrary(left), 0);
}

TEST_F(QueueManagerFaults, ALibraryThatCannotBeFreedDoesNotHideTheMissingEntryPoint) {
  for (const auto& [name, key] : {std::pair("ZXCONN", "KTBNV0152_GETPROCADDRESS_ZXCONN_ERROR"),
                                  std::pair("ZXDISC", "KTBNV0153_GETPROCADDRESS_ZXDISC_ERROR")}) {
    ImportHook<"FreeLibrary", decltype(FreeLibrary)> hook;
    hook.failOnce(ERROR_BUSY);
    EXPECT_EQ(failureWithout(name), messageText(key, path_, kRareText));
    EXPECT_EQ(hook.calls(), 1U);
    EXPECT_NE(FreeLibrary(GetModuleHandleA("omni.dll")), 0);
  }
}

TEST_F(QueueManagerFaults, ALibraryThatCannotBeFreedAtTheEndOfTheObjectIsGivenUp) {
  queues_->initialize(productBeside("complete"));
  ImportHook<"FreeLibrary", decltype(FreeLibrary)> hook;
  hook.failOnce(kRareError);
  queues_.reset();
  EXPECT_EQ(hook.calls(), 1U);
  EXPECT_NE(FreeLibrary(GetModuleHandleA("omni.dll")), 0);
}

}  // namespace
}  // namespace tessel::test
