// Which catalogue file suits the user's locale.
#include "internal/CatalogueFile.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <future>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <tessel/LogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>
#include <tessel/ResourceBundle.h>

#include "host/HostPlatform.h"
#include "support/RecordingHandler.h"
#include "support/TempProduct.h"
#include "support/TraceScope.h"

namespace tessel::host {
namespace {

using internal::catalogueSuffix;

// The user's locale for a scope.
class UserLocale {
 public:
  explicit UserLocale(const std::string& name) { setUserLocaleName(name); }
  ~UserLocale() { setUserLocaleName("en-US"); }
  UserLocale(const UserLocale&) = delete;
  UserLocale& operator=(const UserLocale&) = delete;
};

TEST(CatalogueFile, EveryLanguageHasItsSuffix) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"cs-cz", "_cs.properties"},    {"de-at", "_de.properties"},    {"en-us", ".properties"},
      {"es-es", "_es.properties"},    {"fr-fr", "_fr.properties"},    {"hu-hu", "_hu.properties"},
      {"it-it", "_it.properties"},    {"ja-jp", "_ja.properties"},    {"ko-kr", "_ko.properties"},
      {"pl-pl", "_pl.properties"},    {"pt-br", "_pt_BR.properties"}, {"pt-pt", "_pt_BR.properties"},
      {"ru-ru", "_ru.properties"},    {"zh_tw", "_zh_TW.properties"}, {"zh-tw", "_zh_TW.properties"},
      {"zh_cn", "_zh_CN.properties"}, {"zh_hk", "_zh_CN.properties"}, {"sv-se", ".properties"}};
  for (const auto& [name, suffix] : rows) EXPECT_EQ(suffix, catalogueSuffix(name)) << name;
}

TEST(CatalogueFile, NamesOfLessThanThreeCharactersAreEnglish) {
  for (const char* name : {"", "c", "zh", "fr"}) EXPECT_EQ(".properties", catalogueSuffix(name)) << name;
  EXPECT_EQ("_fr.properties", catalogueSuffix("fra"));
  EXPECT_EQ("_zh_CN.properties", catalogueSuffix("zh_"));
}

TEST(CatalogueFile, OnlyLeadingCharactersCount) {
  EXPECT_EQ("_fr.properties", catalogueSuffix("french_france.1252"));
  EXPECT_EQ(".properties", catalogueSuffix("english_united states.1252"));
  EXPECT_EQ("_zh_TW.properties", catalogueSuffix("zh_tw.utf-8"));
  EXPECT_EQ(".properties", catalogueSuffix("xfr_fr"));
  EXPECT_EQ("_ko.properties", catalogueSuffix("kok-in"));  // Konkani
}

TEST(CatalogueFile, ASkippedExplanationDoesNotSwallowTheNextLine) {
  std::istringstream file(
      "KTBNV0001_A.explanation=ends in \\\nKTBNV0002_B=second\n"
      "KTBNV0003_C.useraction=ends in \\\nKTBNV0004_D=fourth\n");
  EXPECT_EQ(internal::readCatalogue(file), (internal::Messages{{"KTBNV0002_B", "second"}, {"KTBNV0004_D", "fourth"}}));
}

TEST(CatalogueFile, AFileThatEndsInAContinuationIsNeverReadToItsEnd) {
  std::istringstream file("KTBNV0001_A=ends in \\\\");
  EXPECT_EXIT(
      {
        alarm(1);
        internal::readCatalogue(file);
      },
      testing::KilledBySignal(SIGALRM), "");
}

TEST(CatalogueFile, LinesAndTextsOfAnyLengthAreReadWhole) {
  constexpr std::size_t kChunk = 65536;
  for (const std::size_t length : {kChunk - 30, kChunk - 13, kChunk - 12, kChunk - 11, kChunk, 3 * kChunk}) {
    const std::string text(length, 'x');
    std::istringstream file("KTBNV0001_A=" + text + "\nKTBNV0002_B=b");
    EXPECT_EQ(internal::readCatalogue(file), (internal::Messages{{"KTBNV0001_A", text}, {"KTBNV0002_B", "b"}}))
        << length;
  }
}

TEST(CatalogueFile, ALineIsNoMessageWhereverItHoldsAnExplanation) {
  std::istringstream file("KTBNV0001_A=b=c.explanation=d\nKTBNV0002_B=x.useraction=\nKTBNV0003_C=.explanation\n");
  EXPECT_EQ(internal::readCatalogue(file), (internal::Messages{{"KTBNV0003_C", ".explanation"}}));
}

TEST(CatalogueFile, AKeyThatDoesNotBeginWithItsPrefixIsNeverLoaded) {
  std::istringstream file("BUILD_LEVEL=Build level: {0}\n KTBNV0001_A=blank before\nKTBNV0002_B=b\n");
  EXPECT_EQ(internal::readCatalogue(file), (internal::Messages{{"KTBNV0002_B", "b"}}));
}

std::string textIn(const std::string& locale) {
  const test::TempProduct product;
  for (const std::string suffix : {"", "_fr", "_zh_TW", "_zh_CN"}) {
    product.writeCatalogue("Language" + suffix, "KTB1=text" + suffix + "\n");
  }
  const UserLocale user(locale);
  return ResourceBundle("x.Language").getString("KTB1");
}

TEST(CatalogueFile, LocaleNameCountsInAnyCase) {
  EXPECT_EQ("text_fr", textIn("French_France.1252"));
  EXPECT_EQ("text_fr", textIn("fr_FR"));
  EXPECT_EQ("text_zh_TW", textIn("zh_TW.UTF-8"));
  EXPECT_EQ("text_zh_TW", textIn("ZH-TW"));
  EXPECT_EQ("text_zh_CN", textIn("zh_HK"));
  EXPECT_EQ("text", textIn("zh"));
  EXPECT_EQ("text", textIn("C"));
  EXPECT_EQ("text", textIn("English_United States.1252"));
}

void expectTracedFailure(const std::string& locale, const std::string& reason) {
  const test::TraceScope trace("ResourceBundle=MODERATE");
  const test::RecordingHandler recorded("ResourceBundle");
  EXPECT_EQ("text", textIn(locale));
  int found = 0;
  for (const std::string& message : recorded.messages()) {
    if (message.find("data [Caught exception determining locale] [" + reason + "]") != std::string::npos) ++found;
  }
  EXPECT_EQ(1, found);
}

TEST(CatalogueFile, BadLocaleNameIsTracedAndMeansEnglish) { expectTracedFailure("*", "bad locale name"); }

TEST(CatalogueFile, MissingLocaleIsTracedAndMeansEnglish) {
  expectTracedFailure("", "the system names no default locale");
}

// Tells when the file was looked for a third time.
class Attempts : public LogHandler {
 public:
  Attempts() : LogHandler(LogLevel::ALL) { Logger::getLogger("ResourceBundle")->addHandler(*this); }
  ~Attempts() override { Logger::getLogger("ResourceBundle")->removeHandler(*this); }
  Attempts(const Attempts&) = delete;
  Attempts& operator=(const Attempts&) = delete;

  void publish(LogRecord& record) override {
    const bool failed = record.getMessage().find("[Cannot load resources from ]") != std::string::npos;
    if (failed && ++count_ == 3) third_.set_value();
  }
  void waitForThird() { third_.get_future().wait(); }

 private:
  std::atomic<int> count_{0};
  std::promise<void> third_;
};

TEST(CatalogueFile, MissingFileOfALanguageIsWaitedFor) {
  const test::TempProduct product;
  product.writeCatalogue("Late", "KTB1=English is no fall-back\n");
  const UserLocale user("fr-FR");
  const test::TraceScope trace("ResourceBundle=MODERATE");
  Attempts attempts;
  std::string text;
  std::thread reader([&text] { text = ResourceBundle("x.Late").getString("KTB1"); });
  attempts.waitForThird();
  // Complete from the moment it can be seen: the reader may open it at any time.
  product.writeCatalogue("Late.tmp", "KTB1=enfin\n");
  const std::string folder = product.root() + "/lib/messages/";
  std::filesystem::rename(folder + "Late.tmp.properties", folder + "Late_fr.properties");
  reader.join();
  EXPECT_EQ("enfin", text);
}

TEST(CatalogueFile, ReadsMessageLinesOnly) {
  std::istringstream file("# comment\nKTB1=one\nKTB1.explanation=e\nKTB1.useraction=u\nktb2=two\nKTB1=again\n");
  EXPECT_EQ((internal::Messages{{"KTB1", "one"}}), internal::readCatalogue(file));
}

}  // namespace
}  // namespace tessel::host
