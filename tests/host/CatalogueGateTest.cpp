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

// How many inserts the first call that formats `key` passes, from there on.
std::optional<std::size_t> insertsBehind(const std::string& source, std::ptrdiff_t from) {
  const std::regex use(R"(\bkey\b)");
  for (std::sregex_iterator i(source.begin() + from, source.end(), use), end; i != end; ++i) {
    const auto call = enclosingCall(source, static_cast<std::size_t>(from + i->position()));
    if (call && formats(*call)) return insertsBehindKey(*call);
  }
  return std::nullopt;
}

// A helper that formats the key it is given: how many inserts it passes.
std::optional<std::size_t> insertsOfHelper(const std::string& source, const std::string& name) {
  const std::regex definition("\\b" + name + R"((\s*=\s*\[[^\]]*\]\s*)?\([^(){};]*\bconst\s+char\s*\*\s*key\b)");
  std::smatch match;
  if (!std::regex_search(source, match, definition)) return std::nullopt;
  return insertsBehind(source, match.position() + match.length());
}

bool isReturned(const std::string& source, std::size_t at) {
  const std::string before = "return ";
  return at >= before.size() && source.compare(at - before.size(), before.size(), before) == 0;
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
    } else if (isReturned(source, at)) {
      use.inserts = insertsBehind(source, static_cast<std::ptrdiff_t>(at));
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

// The gates: each returns what it finds wrong.

Findings usesOfUnknownKeys(const std::vector<Use>& uses, const internal::Messages& messages,
                           const internal::Messages& elements) {
  Findings found;
  for (const Use& use : uses) {
    const bool isElement = use.key.rfind("KTBNV_", 0) == 0;
    if ((isElement ? elements : messages).count(use.key) == 0) found.push_back(use.place + ": " + use.key);
  }
  return found;
}

Findings usesWithOtherInserts(const std::vector<Use>& uses, const internal::Messages& texts) {
  Findings found;
  for (const Use& use : uses) {
    const auto text = texts.find(use.key);
    const bool fits = use.inserts && text != texts.end() && *use.inserts == placeholders(text->second).size();
    if (!fits) found.push_back(use.place + ": " + use.key);
  }
  return found;
}

Findings unusedKeys(const std::vector<Use>& uses, const internal::Messages& texts) {
  std::set<std::string> used;
  for (const Use& use : uses) used.insert(use.key);
  Findings found;
  for (const auto& [key, text] : texts) {
    if (used.count(key) == 0) found.push_back(key);
  }
  return found;
}

// Keys that are formatted but can be in no catalogue.
std::set<std::string> strangersIn(const std::string& source) {
  const std::regex formatted(R"rx(\bformat\(\s*\w+\s*,\s*"([^"]*)")rx");
  std::set<std::string> strangers;
  for (std::sregex_iterator i(source.begin(), source.end(), formatted), end; i != end; ++i) {
    if ((*i)[1].str().rfind("KTBNV", 0) != 0) strangers.insert((*i)[1]);
  }
  return strangers;
}

Findings numbersOfNoMessage(const std::string& text, const internal::Messages& messages) {
  constexpr std::size_t kNumberLength = 9;
  std::set<std::string> numbers;
  for (const auto& [key, message] : messages) numbers.insert(key.substr(0, kNumberLength));
  const std::regex number("KTBNV[0-9]{4}");
  Findings found;
  for (std::sregex_iterator i(text.begin(), text.end(), number), end; i != end; ++i) {
    if (numbers.count(i->str()) == 0) found.push_back(i->str());
  }
  return found;
}

internal::Messages allTexts() {
  internal::Messages texts = loaded(kMessagesFile);
  texts.merge(loaded(kElementsFile));
  return texts;
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

TEST(CatalogueGate, CountsTheInsertsOfAKeyThatAFunctionReturns) {
  const std::string returned =
      "const char* open() { if (!a()) return \"KTBNV0001_A\"; return nullptr; }\n"
      "if (const char* key = open()) throw trace.failure<X>(key, error.text(), b);";
  EXPECT_EQ(usesInText(returned)[0].inserts, 2U);
  EXPECT_EQ(usesInText("const char* open() { return \"KTBNV0001_A\"; }")[0].inserts, std::nullopt);
}

TEST(CatalogueGate, SeesAKeyThatNoKnownCallFormats) {
  EXPECT_EQ(usesInText("show(\"KTBNV0001_A\");")[0].inserts, std::nullopt);
  EXPECT_EQ(usesInText("const char* k = \"KTBNV0001_A\";")[0].inserts, std::nullopt);
  EXPECT_TRUE(usesInText("// show(\"KTBNV0001_A\");\n/* \"KTBNV0002_B\" */").empty());
}

TEST(CatalogueGate, EveryKeyThatTheSourcesUseStandsInItsCatalogue) {
  const std::vector<Use> wrong = usesInText("format(rd, \"KTBNV0001_A\"); format(rd, \"KTBNV_B\");");
  EXPECT_EQ(usesOfUnknownKeys(wrong, {{"KTBNV_B", ""}}, {{"KTBNV0001_A", ""}}),
            (Findings{"x.cpp:1: KTBNV0001_A", "x.cpp:1: KTBNV_B"}));
  EXPECT_EQ(usesOfUnknownKeys(wrong, {{"KTBNV0001_A", ""}}, {{"KTBNV_B", ""}}), Findings{});
  const std::vector<Use> uses = allUses();
  ASSERT_GT(uses.size(), 30U);
  EXPECT_EQ(usesOfUnknownKeys(uses, loaded(kMessagesFile), loaded(kElementsFile)), Findings{});
}

// The banner of a trace file has two keys that no catalogue can hold, since entries begin with KTBNV: they show as
// themselves.
TEST(CatalogueGate, OnlyTwoKeysOfTheTraceBannerAreInNoCatalogue) {
  EXPECT_EQ(strangersIn("format(rd, \"OTHER\", a); format(rd, \"KTBNV0001_A\");"), std::set<std::string>{"OTHER"});
  std::set<std::string> strangers;
  for (const fs::path& file : sourceFiles({"src", "include"})) {
    strangers.merge(strangersIn(withoutComments(readFile(file))));
  }
  EXPECT_EQ(strangers, (std::set<std::string>{"BUILD_LEVEL", "PROPERTIES"}));
}

TEST(CatalogueGate, EveryCallGivesAnInsertForEachPlaceholder) {
  const internal::Messages texts{{"KTBNV0001_A", "{0} {1}"}};
  EXPECT_EQ(usesWithOtherInserts(usesInText("format(rd, \"KTBNV0001_A\", a, b);"), texts), Findings{});
  for (const char* wrong : {"format(rd, \"KTBNV0001_A\", a);", "show(\"KTBNV0001_A\");"}) {
    EXPECT_EQ(usesWithOtherInserts(usesInText(wrong), texts), Findings{"x.cpp:1: KTBNV0001_A"}) << wrong;
  }
  EXPECT_EQ(usesWithOtherInserts(allUses(), allTexts()), Findings{});
}

TEST(CatalogueGate, EveryMessageNumberThatAHeaderPromisesExists) {
  const internal::Messages messages = loaded(kMessagesFile);
  EXPECT_EQ(numbersOfNoMessage("/// @throws KTBNV9998, KTBNV0001", messages), Findings{"KTBNV9998"});
  for (const fs::path& file : sourceFiles({"include"})) {
    EXPECT_EQ(numbersOfNoMessage(readFile(file), messages), Findings{}) << file;
  }
}

TEST(CatalogueGate, EveryKeyOfTheCataloguesIsUsed) {
  const std::vector<Use> uses = usesInText("format(rd, \"KTBNV0001_A\");");
  EXPECT_EQ(unusedKeys(uses, {{"KTBNV0001_A", ""}, {"KTBNV0002_B", ""}}), Findings{"KTBNV0002_B"});
  EXPECT_EQ(unusedKeys(allUses(), allTexts()), Findings{});
}

}  // namespace tessel::host
