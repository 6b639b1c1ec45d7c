// A worker when reading and writing fail. The pipe exists in the hooks only: run() is called by the test itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include <tessel/IPCClientRunnable.h>

#include "faults/PipeFaults.h"
#include "support/EchoListener.h"
#include "support/EventRecorder.h"
#include "support/RawPipe.h"

namespace tessel::test {
namespace {

class PipeWorker : public testing::Test {
 protected:
  struct Read {
    std::string bytes;
    DWORD error;
  };

  void SetUp() override {
    readFile_.replaceWith([&](HANDLE pipe, void* buffer, DWORD size, DWORD* length, OVERLAPPED* overlapped) -> BOOL {
      EXPECT_EQ(pipe, kPipe);
      EXPECT_EQ(size, 1044U);
      EXPECT_EQ(overlapped, nullptr);
      EXPECT_EQ(GetLastError(), static_cast<DWORD>(NO_ERROR)) << "an old number must not decide";
      const Read read = reads_.empty() ? Read{"", ERROR_BROKEN_PIPE} : reads_.front();
      if (!reads_.empty()) reads_.pop_front();
      std::copy(read.bytes.begin(), read.bytes.end(), static_cast<char*>(buffer));
      *length = static_cast<DWORD>(read.bytes.size());
      if (read.error != NO_ERROR) SetLastError(read.error);
      return read.error == NO_ERROR;
    });
    writeFile_.replaceWith([&](HANDLE, const void* bytes, DWORD size, DWORD* written, OVERLAPPED*) -> BOOL {
      replies_.emplace_back(static_cast<const char*>(bytes), size);
      *written = size - missing_;
      if (writeError_ != NO_ERROR) SetLastError(writeError_);
      return writeError_ == NO_ERROR;
    });
    flush_.replaceWith([&](HANDLE) -> BOOL {
      SetLastError(flushError_);
      return flushError_ == NO_ERROR;
    });
  }

  long run() {
    SetLastError(ERROR_INVALID_HANDLE);
    const long result = worker_.run();
    EXPECT_EQ(flush_.calls(), 1U);
    return result;
  }

  std::string readFailure(DWORD error) const {
    return messageText("KTBNV0085_READ_FAILED", "worker", systemText(error));
  }
  std::string writeFailure(DWORD error) const {
    return messageText("KTBNV0086_WRITE_FAILED", "worker", systemText(error));
  }

  const HANDLE kPipe = reinterpret_cast<HANDLE>(0x1234);
  const std::string request_ = wireMessage(3, 0, "abc");
  std::deque<Read> reads_;
  std::vector<std::string> replies_;
  DWORD writeError_ = NO_ERROR;
  DWORD missing_ = 0;
  DWORD flushError_ = NO_ERROR;
  EventRecorder recorder_;
  EchoListener listener_;
  IPCClientRunnable worker_{"worker", kPipe, listener_};
  ImportHook<"ReadFile", decltype(ReadFile)> readFile_;
  ImportHook<"WriteFile", decltype(WriteFile)> writeFile_;
  ImportHook<"FlushFileBuffers", decltype(FlushFileBuffers)> flush_;
};

TEST_F(PipeWorker, ReturnsTheNumberOfALostClient) {
  reads_ = {{request_, NO_ERROR}, {request_, NO_ERROR}};
  EXPECT_EQ(run(), ERROR_BROKEN_PIPE);
  EXPECT_EQ(replies_, (std::vector<std::string>{request_, request_}));
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{});
}

TEST_F(PipeWorker, ReportsAReadThatFails) {
  reads_ = {{"", kRare}};
  EXPECT_EQ(run(), static_cast<long>(kRare));
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{readFailure(kRare)});
  EXPECT_EQ(replies_.size(), 0U);
}

TEST_F(PipeWorker, ReportsAMessageThatIsTooLongAndAnswersItsBeginning) {
  const std::string full = wireMessage(3, 0, std::string(1024, 'x'));
  reads_ = {{full, ERROR_MORE_DATA}, {request_, NO_ERROR}};
  EXPECT_EQ(run(), ERROR_BROKEN_PIPE);
  EXPECT_EQ(replies_, (std::vector<std::string>{full, request_}));
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{readFailure(ERROR_MORE_DATA)});
}

TEST_F(PipeWorker, ReportsAReadOfNoBytesOnceAndEnds) {
  reads_ = {{"", NO_ERROR}, {request_, NO_ERROR}};
  EXPECT_EQ(run(), NO_ERROR);
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{readFailure(NO_ERROR)});
  EXPECT_EQ(replies_.size(), 0U);
}

TEST_F(PipeWorker, ReportsAReplyThatCannotBeWritten) {
  reads_ = {{request_, NO_ERROR}, {request_, NO_ERROR}};
  writeError_ = kRare;
  EXPECT_EQ(run(), static_cast<long>(kRare));
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{writeFailure(kRare)});
  EXPECT_EQ(replies_.size(), 1U);
  EXPECT_TRUE(worker_.shutdown()) << "it stays marked as processing";
}

TEST_F(PipeWorker, ReportsAReplyThatIsWrittenInPart) {
  reads_ = {{request_, NO_ERROR}};
  missing_ = 1;
  EXPECT_EQ(run(), NO_ERROR);
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{writeFailure(NO_ERROR)});
}

TEST_F(PipeWorker, ReportsACancelledReadUnlessItIsStopped) {
  reads_ = {{"", ERROR_OPERATION_ABORTED}};
  EXPECT_EQ(run(), ERROR_OPERATION_ABORTED);
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{readFailure(ERROR_OPERATION_ABORTED)});
}

TEST_F(PipeWorker, ReportsACancelledFlushAsALostReply) {
  flushError_ = ERROR_OPERATION_ABORTED;
  EXPECT_EQ(run(), ERROR_BROKEN_PIPE);
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{writeFailure(ERROR_OPERATION_ABORTED)});
}

TEST_F(PipeWorker, ReportsALostReplyOnce) {
  reads_ = {{request_, NO_ERROR}};
  writeError_ = ERROR_OPERATION_ABORTED;
  flushError_ = ERROR_OPERATION_ABORTED;
  EXPECT_EQ(run(), ERROR_OPERATION_ABORTED);
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{writeFailure(ERROR_OPERATION_ABORTED)});
}

TEST_F(PipeWorker, ReportsNoFlushToALostClient) {
  flushError_ = ERROR_BROKEN_PIPE;
  EXPECT_EQ(run(), ERROR_BROKEN_PIPE);
  EXPECT_EQ(recorder_.errors(), std::vector<std::string>{});
}

TEST_F(PipeWorker, ReadsNothingAfterAShutdown) {
  EXPECT_FALSE(worker_.shutdown());
  EXPECT_EQ(run(), NO_ERROR);
  EXPECT_EQ(readFile_.calls(), 0U);
}

}  // namespace
}  // namespace tessel::test
