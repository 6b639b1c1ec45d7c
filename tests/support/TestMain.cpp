#include <gmock/gmock.h>

#include "support/ChildProcess.h"
#include "support/Watchdog.h"

int main(int argc, char** argv) {
  if (const auto code = tessel::test::runAsChild(argc, argv)) return *code;
  testing::InitGoogleMock(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new tessel::test::Watchdog);  // GoogleTest deletes it
  return RUN_ALL_TESTS();
}
