// Types as the library shows them.
#include "internal/TypeName.h"

#include <gtest/gtest.h>

#include <tessel/IPCTimeoutException.h>

namespace tessel::host {
namespace {

class Hidden {};

struct Outer {
  class Inner {};
};

TEST(TypeName, IsClassAndTheUnqualifiedName) {
  EXPECT_EQ("class IPCTimeoutException", internal::classText(typeid(IPCTimeoutException)));
  EXPECT_EQ("class Inner", internal::classText(typeid(Outer::Inner)));
  EXPECT_EQ("class Hidden", internal::classText(typeid(Hidden)));
}

TEST(TypeName, IsTheDynamicTypeOfAnObject) {
  const IPCTimeoutException exception("m");
  const NYXException& base = exception;
  EXPECT_EQ("class IPCTimeoutException", internal::classText(typeid(base)));
}

}  // namespace
}  // namespace tessel::host
