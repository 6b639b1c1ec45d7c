// The English catalogues against the sources: every message that can be shown has a text, with a place for each insert,
// and every text can be shown.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "host/CatalogueGate.h"
#include "host/SourceText.h"
#include "internal/CatalogueFile.h"

namespace tessel::host {
namespace {

const fs::path kMessagesFile = kSourceTree / "resources/messages/KTBNVMessages.properties";
const fs::path kElementsFile = kSourceTree / "resources/messages/KTBNVElements.properties";

internal::Messages loaded(const fs::path& path) {
  std::istringstream file(readFile(path));
  return internal::readCatalogue(file);
}

bool formats(const Call& call) { return call.callee == "format" || (call.callee == "failure" && call.templated); }

std::size_t insertsBehindKey(const Call& call) { return call.arguments.size() - call.argument - 1; }

// A helper that formats the key it is given: how many inserts it passes.
std::optional<std::size_t> insertsOfHelper(const std::string& source, const std::string& name) {
  const std::regex definition("\\b" + name + R"((\s*=\s*\[[^\]]*\]\s*)?\([^(){};]*\bconst\s+char\s*\*\s*key\b)");
  std::smatch match;
  if (!std::regex_search(source, match, definition)) return std::nullopt;
  const std::regex use(R"(\bkey\b)");
  const auto body = source.begin() + match.position() + match.length();
  for (std::sregex_iterator i(body, source.end(), use), end; i != end; ++i) {
    const auto call = enclosingCall(source, static_cast<std::size_t>(body - source.begin() + i->position()));
    if (call && formats(*call)) return insertsBehindKey(*call);
  }
  return std::nullopt;
}

struct Use {
  std::string key;
  std::string place;
  std::optional<std::size_t> inserts;  // nothing: no call that formats
};

std::vector<Use> usesIn(const std::string& source, const fs::path& file) {
  std::vector<Use> uses;
  const std::regex literal(R"rx("(KTBNV[0-9A-Z_]*)")rx");
  for (std::sregex_iterator i(source.begin(), source.end(), literal), end; i != end; ++i) {
    const auto at = static_cast<std::size_t>(i->position());
    Use use{(*i)[1], shown(file, source, at), std::nullopt};
    if (const auto call = enclosingCall(source, at)) {
      use.inserts = formats(*call) ? insertsBehindKey(*call) : insertsOfHelper(source, call->callee);
    }
    uses.push_back(use);
  }
  return uses;
}

std::vector<Use> allUses() {
  std::vector<Use> uses;
  for (const fs::path& file : sourceFiles({"src", "include"})) {
    const std::vector<Use> found = usesIn(withoutComments(readFile(file)), file);
    uses.insert(uses.end(), found.begin(), found.end());
  }
  return uses;
}

std::vector<Use> usesInText(const std::string& source) {
  return usesIn(withoutComments(source), kSourceTree / "x.cpp");
}

}  // namespace

TEST(CatalogueGate, CountsTheInsertsOfACallOverLineBreaksAndNestedCalls) {
  const auto uses =
      usesInText("throw trace.failure<X<int>>(\"KTBNV0001_A\", f(a, \"b,)\"), // not, these\n  {c, ','},\n 1'000);");
  ASSERT_EQ(uses.size(), 1U);
  EXPECT_EQ(uses[0].key, "KTBNV0001_A");
  EXPECT_EQ(uses[0].inserts, 3U);
}

TEST(CatalogueGate, CountsTheInsertsOfFormatBehindTheKey) {
  EXPECT_EQ(usesInText("x(NLS::format(rd, \"KTBNV0001_A\"));")[0].inserts, 0U);
  EXPECT_EQ(usesInText("x(NLS::format(rd(a, b), c ? \"KTBNV0001_A\" : d, e));")[0].inserts, 1U);
}

TEST(CatalogueGate, CountsTheInsertsThatAHelperPasses) {
  const std::string lambda =
      "const auto tooShort = [&](const char* key, int n) { return trace.failure<X>(key, a(n), b); };\n"
      "throw tooShort(\"KTBNV0001_A\", 1);";
  EXPECT_EQ(usesInText(lambda)[0].inserts, 2U);
  const std::string function =
      "X failureOf(const R& rd, const char* key,\n const S& insert) { const X x(NLS::format(rd, key, insert)); }\n"
      "throw failureOf(rd, \"KTBNV0001_A\", f());";
  EXPECT_EQ(usesInText(function)[0].inserts, 1U);
  const std::string sameName =
      "const auto failure = [&trace](const char* key) { return trace.failure<X>(key, error.text()); };\n"
      "throw failure(\"KTBNV0001_A\");\n"
      "throw trace.failure<X>(\"KTBNV0001_A\", a, b);";
  EXPECT_EQ(usesInText(sameName)[0].inserts, 1U);
  EXPECT_EQ(usesInText(sameName)[1].inserts, 2U);
}

TEST(CatalogueGate, SeesAKeyThatNoKnownCallFormats) {
  EXPECT_EQ(usesInText("show(\"KTBNV0001_A\");")[0].inserts, std::nullopt);
  EXPECT_EQ(usesInText("const char* k = \"KTBNV0001_A\";")[0].inserts, std::nullopt);
  EXPECT_TRUE(usesInText("// show(\"KTBNV0001_A\");\n/* \"KTBNV0002_B\" */").empty());
}

TEST(CatalogueGate, EveryKeyThatTheSourcesUseStandsInItsCatalogue) {
  const internal::Messages messages = loaded(kMessagesFile);
  const internal::Messages elements = loaded(kElementsFile);
  const std::vector<Use> uses = allUses();
  ASSERT_GT(uses.size(), 30U);
  for (const Use& use : uses) {
    const bool isElement = use.key.rfind("KTBNV_", 0) == 0;
    EXPECT_EQ((isElement ? elements : messages).count(use.key), 1U) << use.place << ": " << use.key;
  }
}

// The banner of a trace file has two keys that no catalogue can hold, since entries begin with KTBNV: they show as
// themselves.
TEST(CatalogueGate, OnlyTwoKeysOfTheTraceBannerAreInNoCatalogue) {
  const std::regex formatted(R"rx(\bformat\(\s*\w+\s*,\s*"([^"]*)")rx");
  std::set<std::string> strangers;
  for (const fs::path& file : sourceFiles({"src", "include"})) {
    const std::string source = withoutComments(readFile(file));
    for (std::sregex_iterator i(source.begin(), source.end(), formatted), end; i != end; ++i) {
      if ((*i)[1].str().rfind("KTBNV", 0) != 0) strangers.insert((*i)[1]);
    }
  }
  EXPECT_EQ(strangers, (std::set<std::string>{"BUILD_LEVEL", "PROPERTIES"}));
}

TEST(CatalogueGate, EveryCallGivesAnInsertForEachPlaceholder) {
  internal::Messages texts = loaded(kMessagesFile);
  texts.merge(loaded(kElementsFile));
  for (const Use& use : allUses()) {
    ASSERT_TRUE(use.inserts) << use.place << ": " << use.key << " is not formatted where it stands";
    EXPECT_EQ(*use.inserts, placeholders(texts[use.key]).size()) << use.place << ": " << use.key;
  }
}

TEST(CatalogueGate, EveryMessageNumberThatAHeaderPromisesExists) {
  std::set<std::string> numbers;
  constexpr std::size_t kNumberLength = 9;
  for (const auto& [key, text] : loaded(kMessagesFile)) numbers.insert(key.substr(0, kNumberLength));
  const std::regex number("KTBNV[0-9]{4}");
  for (const fs::path& file : sourceFiles({"include"})) {
    const std::string header = readFile(file);
    for (std::sregex_iterator i(header.begin(), header.end(), number), end; i != end; ++i) {
      EXPECT_EQ(numbers.count(i->str()), 1U)
          << shown(file, header, static_cast<std::size_t>(i->position())) << ": " << i->str();
    }
  }
}

TEST(CatalogueGate, EveryKeyOfTheCataloguesIsUsed) {
  std::set<std::string> used;
  for (const Use& use : allUses()) used.insert(use.key);
  for (const fs::path& path : {kMessagesFile, kElementsFile}) {
    for (const auto& [key, text] : loaded(path)) EXPECT_EQ(used.count(key), 1U) << key;
  }
}

}  // namespace tessel::host
