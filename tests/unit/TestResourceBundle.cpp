#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <tessel/NYXUtils.h>
#include <tessel/ResourceBundle.h>

#include "support/FreshProcess.h"
#include "support/RecordingHandler.h"
#include "support/TempProduct.h"
#include "support/TraceScope.h"

namespace tessel {
namespace {

using test::TempProduct;
using Texts = std::vector<std::string>;

// The bundle of a catalogue with these bytes; past the cache, so that every test may use the same name.
ResourceBundle bundleOf(const std::string& bytes) {
  const TempProduct product;
  product.writeCatalogue("Catalogue", bytes);
  return ResourceBundle("x.y.Catalogue");
}

void expectAbsent(const ResourceBundle& bundle, const std::string& key) { EXPECT_EQ(key, bundle.getString(key)); }

TEST(ResourceBundle, ReadsTheFileOfTheLastPartOfTheName) {
  const TempProduct product;
  product.writeCatalogue("Last", "KTB1=dotted\n");
  product.writeCatalogue("Plain", "KTB1=plain\n");
  EXPECT_EQ("dotted", ResourceBundle("a.b.c.Last").getString("KTB1"));
  EXPECT_EQ("plain", ResourceBundle("Plain").getString("KTB1"));
}

TEST(ResourceBundle, SecondProductVariableIsTheFallback) {
  const TempProduct product;
  product.writeCatalogue("Fallback", "KTB1=found\n");
  const std::string former = NYXUtils::getenv("NYX_PROD");
  NYXUtils::setenv("NYX_PROD", product.root());
  NYXUtils::setenv("KTB_PROD", "");
  EXPECT_EQ("found", ResourceBundle("x.Fallback").getString("KTB1"));
  NYXUtils::setenv("NYX_PROD", former);
}

TEST(ResourceBundle, WithoutProductRootLooksBesideTheWorkingDirectory) {
  const TempProduct restored;
  const test::TempFolder folder;
  folder.write("vanta/lib/messages/Relative.properties", "KTB1=relative\n");
  folder.write("bin/file", "");
  const std::filesystem::path former = std::filesystem::current_path();
  const std::string formerSecond = NYXUtils::getenv("NYX_PROD");
  NYXUtils::setenv("KTB_PROD", "");
  NYXUtils::setenv("NYX_PROD", "");
  std::filesystem::current_path(folder.path() / "bin");
  EXPECT_EQ("relative", ResourceBundle("x.Relative").getString("KTB1"));
  std::filesystem::current_path(former);
  NYXUtils::setenv("NYX_PROD", formerSecond);
}

TEST(ResourceBundle, SplitsLinesAtTheFirstEqualsSign) {
  const ResourceBundle bundle = bundleOf("KTBNV0001_X=Value\nKTBNV0002_X=a=b\nKTBNV0003_X=\n");
  EXPECT_EQ("Value", bundle.getString("KTBNV0001_X"));
  EXPECT_EQ("a=b", bundle.getString("KTBNV0002_X"));
  EXPECT_EQ("", bundle.getString("KTBNV0003_X"));
}

TEST(ResourceBundle, TrimsNothing) {
  const ResourceBundle bundle = bundleOf("KTBNV0001_X = Value \n KTBNV0002_X=indented\n");
  EXPECT_EQ(" Value ", bundle.getString("KTBNV0001_X "));
  expectAbsent(bundle, "KTBNV0001_X");
  expectAbsent(bundle, "KTBNV0002_X");
}

TEST(ResourceBundle, LineWithoutEqualsSignIsKeyAndText) {
  const ResourceBundle bundle = bundleOf("KTBNV0002_Y\\\n-joined\n");
  EXPECT_EQ("KTBNV0002_Y-joined", bundle.getString("KTBNV0002_Y\\"));
  EXPECT_EQ("KTBNV0002_Z", bundleOf("KTBNV0002_Z\n").getString("KTBNV0002_Z"));
}

TEST(ResourceBundle, SkipsExplanationsAndUserActions) {
  const ResourceBundle bundle = bundleOf(
      "KTBNV0001_X.explanation=e\nKTBNV0001_X.useraction=u\nKTBNV0002_X=see a.useraction=b\nKTBNV0003_X=kept\n");
  expectAbsent(bundle, "KTBNV0001_X.explanation");
  expectAbsent(bundle, "KTBNV0001_X.useraction");
  expectAbsent(bundle, "KTBNV0002_X");
  EXPECT_EQ("kept", bundle.getString("KTBNV0003_X"));
}

TEST(ResourceBundle, SkipsLinesThatDoNotBeginWithThePrefix) {
  const ResourceBundle bundle = bundleOf("# KTBNV0003=a\nktbnv0003=b\n\nKT\nXKTB=c\nKTB=short\n");
  expectAbsent(bundle, "# KTBNV0003");
  expectAbsent(bundle, "KTBNV0003");
  expectAbsent(bundle, "ktbnv0003");
  expectAbsent(bundle, "XKTB");
  EXPECT_EQ("short", bundle.getString("KTB"));
}

TEST(ResourceBundle, FirstDefinitionOfAKeyWins) {
  EXPECT_EQ("first", bundleOf("KTB1=first\nKTB2=x\nKTB1=second\n").getString("KTB1"));
}

TEST(ResourceBundle, JoinsContinuationLines) {
  const ResourceBundle bundle = bundleOf("KTBNV0004_Z=first \\\nsecond\nKTB5=a\\\nb\\\nc\nKTB6=after\n");
  EXPECT_EQ("first second", bundle.getString("KTBNV0004_Z"));
  EXPECT_EQ("abc", bundle.getString("KTB5"));
  EXPECT_EQ("after", bundle.getString("KTB6"));
}

TEST(ResourceBundle, ContinuationReplacesFromTheFirstBackslash) {
  const ResourceBundle bundle = bundleOf("KTB1=a\\bcd\\\n123456\nKTB2=a\\bc\\\n1\n2\n");
  EXPECT_EQ("a123456", bundle.getString("KTB1"));
  EXPECT_EQ("a1bc2", bundle.getString("KTB2"));
}

TEST(ResourceBundle, BackslashesAreNotEscapes) {
  EXPECT_EQ("a\\tb\\u0041c", bundleOf("KTB1=a\\tb\\u0041c\n").getString("KTB1"));
}

TEST(ResourceBundle, KeepsCarriageReturns) {
  const ResourceBundle bundle = bundleOf("KTB1=one\r\nKTB2=two\\\r\nKTB3=three\r\n");
  EXPECT_EQ("one\r", bundle.getString("KTB1"));
  EXPECT_EQ("two\\\r", bundle.getString("KTB2"));
  EXPECT_EQ("three\r", bundle.getString("KTB3"));
}

TEST(ResourceBundle, ReadsALastLineWithoutLineEnd) { EXPECT_EQ("last", bundleOf("KTB1=last").getString("KTB1")); }

TEST(ResourceBundle, UnknownKeyGivesTheKey) {
  const ResourceBundle bundle = bundleOf("KTB1=one\n");
  EXPECT_EQ("KTBNV9999_NONE", bundle.getString("KTBNV9999_NONE"));
  EXPECT_EQ("", bundle.getString(""));
}

TEST(ResourceBundle, IsReadOncePerProcess) {
  const TempProduct product;
  product.writeCatalogue("Once", "KTB1=first\n");
  EXPECT_EQ("first", ResourceBundle::getBundle("x.Once").getString("KTB1"));
  product.writeCatalogue("Once", "KTB1=second\n");
  EXPECT_EQ("first", ResourceBundle::getBundle("x.Once").getString("KTB1"));
  EXPECT_EQ("second", ResourceBundle("x.Once").getString("KTB1"));
}

TEST(ResourceBundle, RemembersAlsoThatThereWasNoFile) {
  const TempProduct product;
  EXPECT_EQ("KTB1", ResourceBundle::getBundle("x.Never").getString("KTB1"));
  product.writeCatalogue("Never", "KTB1=too late\n");
  EXPECT_EQ("KTB1", ResourceBundle::getBundle("x.Never").getString("KTB1"));
}

TEST(ResourceBundle, CacheGoesByTheWholeName) {
  const TempProduct product;
  product.writeCatalogue("Whole", "KTB1=one\n");
  EXPECT_EQ("one", ResourceBundle::getBundle("x.Whole").getString("KTB1"));
  product.writeCatalogue("Whole", "KTB1=two\n");
  EXPECT_EQ("two", ResourceBundle::getBundle("y.Whole").getString("KTB1"));
}

TEST(ResourceBundle, UnitTestEntriesOverwriteNothing) {
  ResourceBundle bundle = bundleOf("KTB1=one\n");
  bundle.setupUnitTest();
  bundle.setupUnitTest();
  for (const std::string digit : {"1", "2", "3", "4", "5"}) {
    EXPECT_EQ("Error message " + digit, bundle.getString("UT_NLS_KEY_" + digit));
  }
  expectAbsent(bundle, "UT_NLS_KEY_6");
  EXPECT_EQ("one", bundle.getString("KTB1"));
}

TEST(ResourceBundle, UnitTestEntriesStayInTheCopy) {
  const TempProduct product;
  product.writeCatalogue("Copied", "KTB1=one\n");
  ResourceBundle bundle = ResourceBundle::getBundle("x.Copied");
  const ResourceBundle before(bundle);
  bundle.setupUnitTest();
  const ResourceBundle after(bundle);
  EXPECT_EQ("Error message 1", after.getString("UT_NLS_KEY_1"));
  expectAbsent(before, "UT_NLS_KEY_1");
  expectAbsent(ResourceBundle::getBundle("x.Copied"), "UT_NLS_KEY_1");
}

TEST(ResourceBundle, AssignmentTakesTheCatalogue) {
  const ResourceBundle source = bundleOf("KTB1=source\n");
  ResourceBundle target = bundleOf("KTB1=target\nKTB2=gone\n");
  target = source;
  EXPECT_EQ("source", target.getString("KTB1"));
  expectAbsent(target, "KTB2");
}

TEST(ResourceBundle, WarnsOnceAboutAMissingFile) {
  test::inFreshProcess([] {
    const TempProduct product;
    const test::RecordingHandler events("ResourceBundle");
    EXPECT_EQ("KTB1", ResourceBundle::getBundle("x.y.Missing").getString("KTB1"));
    ResourceBundle::getBundle("x.y.MissingToo");
    const ResourceBundle third("x.y.Missing");
    ASSERT_EQ(1U, events.records().size());
    const test::Recorded event = events.records().front();
    EXPECT_EQ("File: " + product.root() +
                  "/lib/messages/Missing.properties could not be found for ResourceBundle 'x.y.Missing'",
              event.message);
    EXPECT_EQ(60, event.level.getValue());
    EXPECT_EQ("ResourceBundle", event.className);
  });
}

// The two texts are the wrong way round, on purpose.
TEST(ResourceBundle, TracesHowTheBundleWasFound) {
  const TempProduct product;
  product.writeCatalogue("TracedBundle", "KTB1=one\n");
  const test::TraceScope trace("ResourceBundle=MODERATE");
  const test::RecordingHandler recorded("ResourceBundle");
  ResourceBundle::getBundle("x.TracedBundle");
  const Texts first = recorded.messages();
  ResourceBundle::getBundle("x.TracedBundle");
  const Texts all = recorded.messages();
  const std::string path = product.root() + "/lib/messages/TracedBundle.properties";
  EXPECT_EQ("  {  getBundle [x.TracedBundle]", first.front());
  EXPECT_EQ("-  d  getBundle data [Re-loading bundle from hash map]", first.at(1));
  EXPECT_EQ("-  {  <init> [x.TracedBundle]", first.at(2));
  EXPECT_NE(first.end(), std::find(first.begin(), first.end(),
                                   "---  d  getResourcesFile data [Loading resources from ] [" + path + "]"));
  EXPECT_EQ("  }  getBundle", first.back());
  EXPECT_EQ((Texts{"  {  getBundle [x.TracedBundle]", "-  d  getBundle data [Instantiating bundle for first time]",
                   "  }  getBundle"}),
            Texts(all.begin() + static_cast<std::ptrdiff_t>(first.size()), all.end()));
}

TEST(ResourceBundle, TracesThatAFileCannotBeRead) {
  const TempProduct product;
  const test::TraceScope trace("ResourceBundle=MODERATE");
  const test::RecordingHandler recorded("ResourceBundle");
  const ResourceBundle bundle("x.Unreadable");
  const Texts messages = recorded.messages();
  EXPECT_EQ(1, std::count(messages.begin(), messages.end(),
                          "--  d  getResourcesFile data [Cannot load resources from ] [" + product.root() +
                              "/lib/messages/Unreadable.properties]"));
}

TEST(ResourceBundle, ThreadsMayLookUpTheSameBundlesAtOnce) {
  const TempProduct product;
  for (int i = 0; i < 8; ++i) product.writeCatalogue("Shared" + std::to_string(i), "KTB1=shared\n");
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      for (int n = 0; n < 8; ++n) {
        EXPECT_EQ("shared", ResourceBundle::getBundle("x.Shared" + std::to_string(n)).getString("KTB1"));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace tessel
