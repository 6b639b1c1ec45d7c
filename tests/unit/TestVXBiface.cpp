// The queue-manager interface against a stand-in for the middleware.
#include <windows.h>

#include <gmock/gmock.h>

#include <memory>

#include <tessel/NYXException.h>
#include <tessel/VXBifaceImpl.h>

#include "support/EventRecorder.h"
#include "support/Handles.h"
#include "support/PipePeers.h"
#include "support/QueueManagers.h"
#include "support/Records.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

bool isLoaded() { return GetModuleHandleA("omni.dll") != nullptr; }

class QueueManager : public testing::Test {
 protected:
  ~QueueManager() override { EXPECT_FALSE(isLoaded() && !queues_); }

  // Codes that nobody answers with.
  long completion_ = -1;
  long reason_ = -1;
  const QueueManagerScript script_;
  std::unique_ptr<VXBiface> queues_{VXBiface::newInstance()};
};

TEST_F(QueueManager, IsConnectedToAndDisconnectedFrom) {
  queues_->initialize(productBeside("complete"));
  queues_->connect("QM.one", &completion_, &reason_);
  EXPECT_EQ(completion_, 0);
  EXPECT_EQ(reason_, 0);
  completion_ = reason_ = -1;
  queues_->disconnect(&completion_, &reason_);
  EXPECT_EQ(completion_, 0);
  EXPECT_EQ(reason_, 0);
  EXPECT_THAT(script_.calls(), testing::ElementsAre("ZXCONN QM.one 0", "ZXDISC 4711"));
}

TEST_F(QueueManager, ReturnsTheCodesAsTheyAreAndThrowsNothing) {
  queues_->initialize(productBeside("complete"));
  QueueManagerScript::answerConnect("2,2059");
  queues_->connect("", &completion_, &reason_);
  EXPECT_EQ(completion_, 2);
  EXPECT_EQ(reason_, 2059);
  QueueManagerScript::answerDisconnect("-2147483648,2147483647");
  queues_->disconnect(&completion_, &reason_);
  EXPECT_EQ(completion_, LONG_MIN);
  EXPECT_EQ(reason_, LONG_MAX);
  EXPECT_THAT(script_.calls(), testing::ElementsAre("ZXCONN  0", "ZXDISC 4711"));
}

TEST_F(QueueManager, WaitsForASlowAnswer) {
  queues_->initialize(productBeside("complete"));
  QueueManagerScript::delay(50);
  QueueManagerScript::answerConnect("1,7");
  queues_->connect("slow", &completion_, &reason_);
  EXPECT_EQ(completion_, 1);
  EXPECT_EQ(reason_, 7);
}

TEST_F(QueueManager, IsNotConnectedToBeforeTheLibraryIsLoaded) {
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->connect("x", &completion_, &reason_); }),
            messageText("KTBNV0156_ZXCONN_NOT_INITIALIZED"));
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->disconnect(&completion_, &reason_); }),
            messageText("KTBNV0157_ZXDISC_NOT_INITIALIZED"));
  EXPECT_EQ(completion_, -1);
  EXPECT_EQ(reason_, -1);
}

TEST_F(QueueManager, NeedsAProductRoot) {
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->initialize(""); }), messageText("KTBNV0154_PRODUCT_ROOT_EMPTY"));
  EXPECT_FALSE(isLoaded());
}

TEST_F(QueueManager, IsReportedWithItsPathWhenTheLibraryIsMissing) {
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->initialize(productBeside("nowhere")); }),
            messageText("KTBNV0151_LOADLIBRARY_ERROR", libraryBeside("nowhere"), systemText(ERROR_MOD_NOT_FOUND)));
  EXPECT_FALSE(isLoaded());
}

TEST_F(QueueManager, ALibraryWithoutConnectIsRefusedAndFreed) {
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->initialize(productBeside("without-connect")); }),
            messageText("KTBNV0152_GETPROCADDRESS_ZXCONN_ERROR", libraryBeside("without-connect"),
                        systemText(ERROR_PROC_NOT_FOUND)));
  EXPECT_FALSE(isLoaded());
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->disconnect(&completion_, &reason_); }),
            messageText("KTBNV0157_ZXDISC_NOT_INITIALIZED"));
}

TEST_F(QueueManager, ALibraryWithoutDisconnectIsRefusedAndFreed) {
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->initialize(productBeside("without-disconnect")); }),
            messageText("KTBNV0153_GETPROCADDRESS_ZXDISC_ERROR", libraryBeside("without-disconnect"),
                        systemText(ERROR_PROC_NOT_FOUND)));
  EXPECT_FALSE(isLoaded());
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->connect("x", &completion_, &reason_); }),
            messageText("KTBNV0156_ZXCONN_NOT_INITIALIZED"));
}

TEST_F(QueueManager, EachFailureIsTraced) {
  const TraceScope trace("VXBifaceImpl=FLOW");
  const RecordingHandler log("VXBifaceImpl");
  EXPECT_THROW(queues_->initialize(productBeside("nowhere")), NYXException);
  EXPECT_THROW(queues_->connect("x", &completion_, &reason_), NYXException);
  EXPECT_THROW(queues_->disconnect(&completion_, &reason_), NYXException);
  std::vector<std::string> methods;
  for (const Recorded& record : recordsOf(log, LogRecordType::THROWING)) methods.push_back(record.methodName);
  EXPECT_THAT(methods, testing::ElementsAre("initialize", "connect", "disconnect"));
}

// As the operators' tool does before it loads the library.
TEST_F(QueueManager, FindsWhatTheLibraryNeedsOnlyInTheExtendedSearchPath) {
  const std::string path = NYXUtils::getenv("PATH");
  EXPECT_EQ(
      thrownBy<NYXException>([&] { queues_->initialize(productBeside("with-dependency")); }),
      messageText("KTBNV0151_LOADLIBRARY_ERROR", libraryBeside("with-dependency"), systemText(ERROR_MOD_NOT_FOUND)));
  NYXUtils::addBinDirToPath(productBeside("with-dependency"));
  queues_->initialize(productBeside("with-dependency"));
  queues_->connect("x", &completion_, &reason_);
  EXPECT_EQ(completion_, 0);
  NYXUtils::setenv("PATH", path);
}

TEST_F(QueueManager, TheLibraryIsNotLoadedASecondTime) {
  queues_->initialize(productBeside("complete"));
  queues_->initialize(productBeside("nowhere"));
  queues_->initialize("");
  queues_->connect("x", &completion_, &reason_);
  EXPECT_EQ(completion_, 0);
  queues_->cleanup();
  EXPECT_FALSE(isLoaded());
}

TEST_F(QueueManager, CanBeCleanedUpTwiceAndWithNothingLoaded) {
  queues_->cleanup();
  queues_->initialize(productBeside("complete"));
  queues_->cleanup();
  EXPECT_FALSE(isLoaded());
  queues_->cleanup();
  EXPECT_EQ(thrownBy<NYXException>([&] { queues_->connect("x", &completion_, &reason_); }),
            messageText("KTBNV0156_ZXCONN_NOT_INITIALIZED"));
  queues_->initialize(productBeside("complete"));
  EXPECT_TRUE(isLoaded());
}

TEST_F(QueueManager, IsFreedWithTheObject) {
  const HandleBaseline handles;
  queues_->initialize(productBeside("complete"));
  queues_.reset();
  EXPECT_FALSE(isLoaded());
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(QueueManager, TracesTheCodes) {
  EventRecorder recorder;
  const Tracing tracing("VXBifaceImpl");
  queues_->initialize(productBeside("complete"));
  QueueManagerScript::answerConnect("2,2058");
  queues_->connect("x", &completion_, &reason_);
  EXPECT_EQ(recorder.traced("completion code and reason"), 1);
}

}  // namespace
}  // namespace tessel::test
