// The system's headers first, the message header behind them: the system's macro is gone.
#include <windows.h>

#include <tessel/IPCMessage.h>

#include <gtest/gtest.h>

#ifdef STATUS_TIMEOUT
#error "the constant of the message format cannot be named"
#endif

namespace tessel::test {
namespace {

TEST(IPCMessage, ItsTimeoutStatusCanBeNamedAfterTheSystemsHeaders) {
  static_assert(IPCMessage::STATUS_TIMEOUT == 2);
  static_assert(IPCMessage::MessageStatus::TIMEOUT == 2);
  EXPECT_EQ(IPCMessage(1, IPCMessage::STATUS_TIMEOUT, "late").getMessageStatus(), 2);
}

}  // namespace
}  // namespace tessel::test
