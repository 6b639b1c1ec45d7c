#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <sstream>
#include <type_traits>
#include <utility>

#include <tessel/FilePermissionsException.h>
#include <tessel/IPCException.h>
#include <tessel/IPCNotAvailableForUserException.h>
#include <tessel/IPCNotFoundException.h>
#include <tessel/IPCTimeoutException.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXMessageTooShortException.h>
#include <tessel/NYXUnsupportedOperationException.h>
#include <tessel/PropertyNotFoundException.h>

#include "support/FreshProcess.h"
#include "support/TempProduct.h"

namespace tessel {
namespace {

std::string causedBy() {
  return " " + NLS::format("com.kelvo.tessel.nativ.common.KTBNVElements", "KTBNV_CAUSED_BY") + " ";
}

template <class Exception>
void expectName(const std::string& name) {
  const Exception exception("m");
  EXPECT_EQ("class " + name + ": m", exception.toString());
  const NYXException& base = exception;
  EXPECT_EQ("class " + name + ": m", base.toString());
  EXPECT_EQ("class " + name + ": m", Exception(exception).toString());
  EXPECT_EQ("m", base.getMessage());
}

TEST(NYXException, ShowsClassAndMessage) {
  const std::string text = IPCNotFoundException("x").toString();
  EXPECT_EQ("class IPCNotFoundException: x", text);
  EXPECT_EQ(29U, text.size());
}

TEST(NYXException, EveryClassShowsItsOwnName) {
  expectName<NYXException>("NYXException");
  expectName<NYXIOException>("NYXIOException");
  expectName<NYXMessageTooShortException>("NYXMessageTooShortException");
  expectName<NYXUnsupportedOperationException>("NYXUnsupportedOperationException");
  expectName<FilePermissionsException>("FilePermissionsException");
  expectName<PropertyNotFoundException>("PropertyNotFoundException");
  expectName<IPCException>("IPCException");
  expectName<IPCNotFoundException>("IPCNotFoundException");
  expectName<IPCNotAvailableForUserException>("IPCNotAvailableForUserException");
  expectName<IPCTimeoutException>("IPCTimeoutException");
}

TEST(NYXException, EveryClassHasItsDirectBase) {
  EXPECT_THROW(throw NYXIOException("m"), NYXException);
  EXPECT_THROW(throw NYXMessageTooShortException("m"), NYXException);
  EXPECT_THROW(throw NYXUnsupportedOperationException("m"), NYXException);
  EXPECT_THROW(throw FilePermissionsException("m"), NYXException);
  EXPECT_THROW(throw PropertyNotFoundException("m"), NYXException);
  EXPECT_THROW(throw IPCException("m"), NYXException);
  EXPECT_THROW(throw IPCNotFoundException("m"), IPCException);
  EXPECT_THROW(throw IPCNotAvailableForUserException("m"), IPCException);
  EXPECT_THROW(throw IPCTimeoutException("m"), IPCException);
  EXPECT_TRUE((!std::is_base_of_v<IPCException, NYXIOException>));
}

TEST(NYXException, TextWithAnEmptyMessageStillHasTheSeparator) {
  EXPECT_EQ("class NYXException: ", NYXException("").toString());
}

TEST(NYXException, CauseLosesItsType) {
  const IPCTimeoutException late("late");
  const NYXException exception("m", &late);
  EXPECT_EQ("class NYXException: m" + causedBy() + "class NYXException: late", exception.toString());
  EXPECT_EQ("class NYXException: late", exception.getCause().toString());
}

TEST(NYXException, NullCauseIsNoCause) { EXPECT_EQ("class NYXException: m", NYXException("m", nullptr).toString()); }

TEST(NYXException, TextOfAChainIsOneLine) {
  const IPCException root("root");
  const NYXException middle("middle", &root);
  const NYXException exception("top", &middle);
  EXPECT_EQ(
      "class NYXException: top" + causedBy() + "class NYXException: middle" + causedBy() + "class NYXException: root",
      exception.toString());
}

TEST(NYXException, CausedByPhraseComesFromTheCatalogue) {
  test::inFreshProcess([] {
    const test::TempProduct product;
    product.writeCatalogue("KTBNVElements", "KTBNV_CAUSED_BY=because of\n");
    const NYXException root("root");
    EXPECT_EQ("class NYXException: top because of class NYXException: root", NYXException("top", &root).toString());
  });
}

TEST(NYXException, CauseIsACopy) {
  auto cause = std::make_unique<NYXException>("cause");
  const NYXException exception("m", cause.get());
  cause.reset();
  EXPECT_EQ("cause", exception.getCause().getMessage());
}

TEST(NYXException, CopyOfADeepChainOutlivesTheOriginal) {
  const NYXException root("root");
  const NYXException middle("middle", &root);
  auto first = std::make_unique<NYXException>("top", &middle);
  const NYXException copy(*first);
  first.reset();
  EXPECT_EQ("top", copy.getMessage());
  EXPECT_EQ("middle", copy.getCause().getMessage());
  EXPECT_EQ("root", copy.getCause().getCause().getMessage());
}

TEST(NYXException, ThrownObjectOwnsItsOwnChain) {
  try {
    const NYXException root("root");
    const NYXException thrown("top", &root);
    throw thrown;
  } catch (const NYXException& caught) {
    EXPECT_EQ("root", caught.getCause().getMessage());
  }
}

TEST(NYXException, MovingLeavesTheSourceWhole) {
  const NYXException root("root");
  NYXException source("top", &root);
  const NYXException target(std::move(source));
  EXPECT_EQ("class NYXException: top" + causedBy() + "class NYXException: root", source.toString());
  EXPECT_EQ(source.toString(), target.toString());
}

// Where the members lie: the cause can only be compared by address, and nothing hands that out.
struct Layout {
  const void* virtualFunctions;
  std::string message;
  const void* cause;
};
static_assert(sizeof(Layout) == sizeof(NYXException));

const void* causeOf(const NYXException& exception) {
  const void* cause = nullptr;
  const auto* bytes = reinterpret_cast<const char*>(&exception);
  std::memcpy(&cause, bytes + sizeof(NYXException) - sizeof cause, sizeof cause);
  return cause;
}

TEST(NYXException, AssignmentSharesTheCause) {
  const NYXException cause("cause");
  const NYXException source("source", &cause);
  // Never destroyed: both objects hold the same cause.
  alignas(NYXException) std::array<unsigned char, sizeof(NYXException)> memory{};
  auto& target = *new (memory.data()) NYXException("target");
  EXPECT_EQ(&target, &(target = source));
  EXPECT_EQ("source", target.getMessage());
  EXPECT_EQ("cause", target.getCause().getMessage());
  EXPECT_EQ("cause", source.getCause().getMessage());
  EXPECT_NE(nullptr, causeOf(source));
  EXPECT_EQ(causeOf(source), causeOf(target));
}

TEST(NYXException, AssignmentDoesNotReleaseTheFormerCause) {
  const NYXException cause("cause");
  NYXException former("former", &cause);
  alignas(NYXException) std::array<unsigned char, sizeof(NYXException)> memory{};
  auto& target = *new (memory.data()) NYXException("target");
  target = former;
  target = NYXException("no cause");
  EXPECT_EQ("class NYXException: no cause", target.toString());
  EXPECT_EQ("cause", former.getCause().getMessage());
}

TEST(NYXException, StreamShowsTheDynamicType) {
  const IPCTimeoutException exception("late");
  const NYXException& base = exception;
  std::ostringstream text;
  text << base << '|';
  EXPECT_EQ("class IPCTimeoutException: late|", text.str());
}

}  // namespace
}  // namespace tessel
