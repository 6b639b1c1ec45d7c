// The message header first, the system's headers behind it: the system's macro is there again.
#include <tessel/IPCMessage.h>

#include <windows.h>

#include <gtest/gtest.h>

namespace tessel::test {
namespace {

TEST(IPCMessage, ItsTimeoutStatusHasANameThatTheSystemsMacroDoesNotTake) {
  static_assert(IPCMessage::MessageStatus::TIMEOUT == 2);
  static_assert(STATUS_TIMEOUT == 0x102);
  EXPECT_EQ(IPCMessage(1, IPCMessage::MessageStatus::TIMEOUT, "late").getMessageStatus(), 2);
}

}  // namespace
}  // namespace tessel::test
