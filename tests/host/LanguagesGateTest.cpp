// The catalogues of all languages by the gates, and each gate by a fixture that it stops.
#include <gtest/gtest.h>

#include "host/CatalogueGate.h"
#include "host/SourceText.h"
#include "internal/CatalogueFile.h"

namespace tessel::host {
namespace {

const std::string kGood =
    "# comment\n"
    "KTBNV0001_A=KTBNV0001E: File ''{0}'': {1}\n"
    "KTBNV0001_A.explanation=Why.\n"
    "KTBNV0001_A.useraction=What.\n"
    "\n"
    "KTBNV_B=Date: {0}\n";

std::string with(const std::string& what, const std::string& instead) {
  std::string file = kGood;
  return file.replace(file.find(what), what.size(), instead);
}

Texts textsWith(const std::string& what, const std::string& instead) { return textsOf(with(what, instead)); }

struct Catalogue {
  fs::path path;
  std::string file;
  Texts texts;
  Texts english;
  bool isEnglish;
};

std::vector<Catalogue> catalogues() {
  std::vector<Catalogue> all;
  for (const char* bundle : {"KTBNVMessages", "KTBNVElements"}) {
    const fs::path start = kSourceTree / "resources/messages" / bundle;
    const Texts english = textsOf(readFile(start.string() + ".properties"));
    for (const std::string& suffix : internal::catalogueSuffixes()) {
      const fs::path path = start.string() + suffix;
      const std::string file = readFile(path);
      all.push_back({path, file, textsOf(file), english, suffix == ".properties"});
    }
  }
  return all;
}

// Why a text may be the same as in English.
const std::vector<std::string> kSameInEveryLanguage = {
    "KTBNV_START_LOG_BANNER2",  // a line of dashes
};

template <class Gate>
void expectOpen(Gate gate) {
  const std::vector<Catalogue> all = catalogues();
  EXPECT_EQ(all.size(), 28U);
  for (const Catalogue& catalogue : all) EXPECT_EQ(gate(catalogue), Findings{}) << catalogue.path;
}

TEST(LanguagesGate, EveryLanguageOfTheLibraryHasItsTwoCatalogues) {
  const std::vector<std::string> suffixes = internal::catalogueSuffixes();
  EXPECT_EQ(suffixes.size(), 14U);
  for (const Catalogue& catalogue : catalogues()) EXPECT_FALSE(catalogue.texts.empty()) << catalogue.path;
}

TEST(LanguagesGate, AFileHasPlainLinesOfAscii) {
  EXPECT_EQ(bytesThatAreNoPlainLines(kGood), Findings{});
  EXPECT_EQ(bytesThatAreNoPlainLines(with("comment\n", "comment\r\n")), Findings{"line 1: byte 13"});
  EXPECT_EQ(bytesThatAreNoPlainLines(with("Why", "\xC3\xA9")), (Findings{"line 3: byte 195", "line 3: byte 169"}));
  EXPECT_EQ(bytesThatAreNoPlainLines(with("Why.", "Why\\")), Findings{"line 3: ends in a backslash"});
  EXPECT_EQ(bytesThatAreNoPlainLines("KTBNV_B=x"), Findings{"no line end at the end"});
  expectOpen([](const Catalogue& catalogue) { return bytesThatAreNoPlainLines(catalogue.file); });
}

TEST(LanguagesGate, EveryLineIsAnEntryOrAComment) {
  EXPECT_EQ(linesThatAreNoEntries(kGood), Findings{});
  EXPECT_EQ(linesThatAreNoEntries(with("# comment", "comment")), Findings{"comment"});
  expectOpen([](const Catalogue& catalogue) { return linesThatAreNoEntries(catalogue.file); });
}

TEST(LanguagesGate, NoKeyIsDefinedTwice) {
  EXPECT_EQ(keysDefinedTwice(kGood), Findings{});
  EXPECT_EQ(keysDefinedTwice(kGood + "KTBNV_B=Other\n"), Findings{"KTBNV_B"});
  expectOpen([](const Catalogue& catalogue) { return keysDefinedTwice(catalogue.file); });
}

TEST(LanguagesGate, NoTextIsEmptyOrPadded) {
  EXPECT_EQ(textsThatAreEmpty(kGood), Findings{});
  EXPECT_EQ(textsThatAreEmpty(with("=Why.", "=")), Findings{"KTBNV0001_A.explanation"});
  EXPECT_EQ(textsThatAreEmpty(with("=Why.", "=  ")), Findings{"KTBNV0001_A.explanation"});
  EXPECT_EQ(textsThatAreEmpty(with("=Why.", "= Why.")), Findings{"KTBNV0001_A.explanation"});
  expectOpen([](const Catalogue& catalogue) { return textsThatAreEmpty(catalogue.file); });
}

TEST(LanguagesGate, KeysAreNumberedMessagesOrElements) {
  EXPECT_EQ(keysOfNoKnownForm(kGood), Findings{});
  EXPECT_EQ(keysOfNoKnownForm(with("KTBNV_B", "DATE")), Findings{"DATE"});
  EXPECT_EQ(keysOfNoKnownForm(with("KTBNV_B=", "KTBNV_B =")), Findings{"KTBNV_B "});
  expectOpen([](const Catalogue& catalogue) { return keysOfNoKnownForm(catalogue.file); });
}

TEST(LanguagesGate, EscapesAreWellFormed) {
  for (const char* good : {"\\u00e9", "\\uD83D\\uDE00"}) {
    EXPECT_EQ(escapesThatAreMalformed(textsWith("Why", good)), Findings{}) << good;
  }
  for (const char* wrong : {"\\u00e", "\\n", "\\uD83D", "\\uDE00", "\\u00g9", "C:\\temp"}) {
    EXPECT_EQ(escapesThatAreMalformed(textsWith("Why", wrong)), Findings{"KTBNV0001_A.explanation"}) << wrong;
  }
  expectOpen([](const Catalogue& catalogue) { return escapesThatAreMalformed(catalogue.texts); });
}

TEST(LanguagesGate, ApostrophesAreWrittenTwice) {
  EXPECT_EQ(apostrophesThatStandAlone(textsOf(kGood)), Findings{});
  EXPECT_EQ(apostrophesThatStandAlone(textsWith("''{0}", "'{0}")), Findings{"KTBNV0001_A"});
  EXPECT_EQ(apostrophesThatStandAlone(textsWith("Why", "Don't")), Findings{"KTBNV0001_A.explanation"});
  EXPECT_EQ(apostrophesThatStandAlone(textsWith("Why", "A'''b")), Findings{"KTBNV0001_A.explanation"});
  expectOpen([](const Catalogue& catalogue) { return apostrophesThatStandAlone(catalogue.texts); });
}

TEST(LanguagesGate, PlaceholdersCountFromZeroWithoutGapsAndStandOnce) {
  EXPECT_EQ(placeholdersWithGaps(textsOf(kGood)), Findings{});
  EXPECT_EQ(placeholdersWithGaps(textsWith("''{0}'': {1}", "{1} {0}")), Findings{});
  for (const char* wrong : {"{1}", "{0} {2}", "{0} {0}", "{}", "{0", "0}", "{00}", "{a}"}) {
    EXPECT_EQ(placeholdersWithGaps(textsWith("''{0}'': {1}", wrong)), Findings{"KTBNV0001_A"}) << wrong;
  }
  EXPECT_EQ(placeholdersWithGaps(textsWith("Why", "{0}")), Findings{"KTBNV0001_A.explanation"});
  expectOpen([](const Catalogue& catalogue) { return placeholdersWithGaps(catalogue.texts); });
}

TEST(LanguagesGate, EachMessageHasAnExplanationAndAnAction) {
  EXPECT_EQ(messagesWithoutExplanationOrAction(textsOf(kGood)), Findings{});
  EXPECT_EQ(messagesWithoutExplanationOrAction(textsWith(".explanation", ".explained")),
            Findings{"KTBNV0001_A.explanation"});
  EXPECT_EQ(messagesWithoutExplanationOrAction(textsWith(".useraction", ".action")),
            Findings{"KTBNV0001_A.useraction"});
  expectOpen([](const Catalogue& catalogue) { return messagesWithoutExplanationOrAction(catalogue.texts); });
}

TEST(LanguagesGate, EachExplanationAndActionHasItsMessage) {
  EXPECT_EQ(explanationsWithoutMessage(textsOf(kGood)), Findings{});
  EXPECT_EQ(explanationsWithoutMessage(textsWith("KTBNV0001_A=", "KTBNV0001_B=")),
            (Findings{"KTBNV0001_A.explanation", "KTBNV0001_A.useraction"}));
  expectOpen([](const Catalogue& catalogue) { return explanationsWithoutMessage(catalogue.texts); });
}

TEST(LanguagesGate, NoNumberIsThatOfTwoMessages) {
  EXPECT_EQ(numbersUsedTwice(textsOf(kGood)), Findings{});
  EXPECT_EQ(numbersUsedTwice(textsOf(kGood + "KTBNV0001_C=KTBNV0001E: x\n")), Findings{"KTBNV0001"});
  expectOpen([](const Catalogue& catalogue) { return numbersUsedTwice(catalogue.texts); });
}

TEST(LanguagesGate, EachMessageStartsWithItsNumberAndSeverity) {
  EXPECT_EQ(messagesWithoutTheirNumber(textsOf(kGood)), Findings{});
  for (const char* wrong : {"KTBNV0002E: ", "KTBNV0001X: ", "KTBNV0001E ", "KTBNV0001E:\\uff1a", "KTBNV0001E:  "}) {
    EXPECT_EQ(messagesWithoutTheirNumber(textsWith("KTBNV0001E: ", wrong)), Findings{"KTBNV0001_A"}) << wrong;
  }
  expectOpen([](const Catalogue& catalogue) { return messagesWithoutTheirNumber(catalogue.texts); });
}

TEST(LanguagesGate, EachMessageShowsEveryInsertOnceAndNoPlaceholder) {
  EXPECT_EQ(textsThatRenderWrongly(textsOf(kGood)), Findings{});
  for (const char* wrong : {"{0} {0} {1}", "{1}", "{0} {2}", "{0", "{0}}"}) {
    EXPECT_EQ(textsThatRenderWrongly(textsWith("''{0}'': {1}", wrong)), Findings{"KTBNV0001_A"}) << wrong;
  }
  expectOpen([](const Catalogue& catalogue) { return textsThatRenderWrongly(catalogue.texts); });
}

TEST(LanguagesGate, EveryLanguageHasTheKeysOfEnglish) {
  const Texts english = textsOf(kGood);
  EXPECT_EQ(keysThatDiffer(english, english), Findings{});
  EXPECT_EQ(keysThatDiffer(english, textsWith("KTBNV_B", "KTBNV_C")),
            (Findings{"missing: KTBNV_B", "not in English: KTBNV_C"}));
  expectOpen([](const Catalogue& catalogue) { return keysThatDiffer(catalogue.english, catalogue.texts); });
}

TEST(LanguagesGate, EveryLanguageHasThePlaceholdersOfEnglish) {
  const Texts english = textsOf(kGood);
  EXPECT_EQ(placeholdersThatDiffer(english, textsWith("''{0}'': {1}", "{1}: {0}")), Findings{});
  EXPECT_EQ(placeholdersThatDiffer(english, textsWith(": {1}", "")), Findings{"KTBNV0001_A"});
  expectOpen([](const Catalogue& catalogue) { return placeholdersThatDiffer(catalogue.english, catalogue.texts); });
}

TEST(LanguagesGate, EveryLanguageHasTheSeveritiesOfEnglish) {
  const Texts english = textsOf(kGood);
  EXPECT_EQ(severitiesThatDiffer(english, english), Findings{});
  EXPECT_EQ(severitiesThatDiffer(english, textsWith("0001E: ", "0001W: ")), Findings{"KTBNV0001_A"});
  expectOpen([](const Catalogue& catalogue) { return severitiesThatDiffer(catalogue.english, catalogue.texts); });
}

TEST(LanguagesGate, NoTextIsLeftInEnglish) {
  const Texts english = textsOf("KTBNV_B=Date: {0}\nKTBNV_C=-----\n");
  const Texts german = textsOf("KTBNV_B=Datum: {0}\nKTBNV_C=-----\n");
  EXPECT_EQ(textsLeftInEnglish(english, german, {}), Findings{"KTBNV_C"});
  EXPECT_EQ(textsLeftInEnglish(english, german, {"KTBNV_C"}), Findings{});
  EXPECT_EQ(textsLeftInEnglish(english, english, {"KTBNV_C"}), Findings{"KTBNV_B"});
  expectOpen([](const Catalogue& catalogue) {
    if (catalogue.isEnglish) return Findings{};
    return textsLeftInEnglish(catalogue.english, catalogue.texts, kSameInEveryLanguage);
  });
}

TEST(LanguagesGate, NoTextIsLongerThanTwoAndAHalfTimesEnglish) {
  const Texts english = textsOf("KTBNV_B=1234\n");
  EXPECT_EQ(textsThatAreTooLong(english, textsOf("KTBNV_B=\\u00e9234567890\n")), Findings{});
  EXPECT_EQ(textsThatAreTooLong(english, textsOf("KTBNV_B=12345678901\n")), Findings{"KTBNV_B"});
  expectOpen([](const Catalogue& catalogue) { return textsThatAreTooLong(catalogue.english, catalogue.texts); });
}

}  // namespace
}  // namespace tessel::host
