// No text that operators see is written in the sources: it comes from the catalogues, or it is listed here with the
// reason why it cannot.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <vector>

#include "host/SourceText.h"

namespace tessel::host {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kDeveloper = "an error of the program's developer, which only a capture shows";
constexpr const char* kPunctuation = "it says nothing";
constexpr const char* kNoFailure = "only trace shows it, and the plain catalogue is taken";

// Literal texts of exceptions, with the reason.
const std::map<std::string, std::string> kLiteralExceptions = {
    {"EventLog assignment operator should never be called!", kDeveloper},
    {"EventLog copy constructor should never be called!", kDeveloper},
    {"File lock name expected to end .lck but doesn't", kDeveloper},
    {"GetByteArrayRegion failed", "the virtual machine's own exception stands in its place"},
    {"GetStringUTFChars failed", "the virtual machine's own exception stands in its place"},
    {"IPCServerImpl::disconnect called from within onMessage", kDeveloper},
    {" - Not all inserts matched (", kDeveloper},
    {" - insufficient inserts (", kDeveloper},
    {" for key ", kDeveloper},
    {" used)", kDeveloper},
    {")", kPunctuation},
    {", only ", kDeveloper},
    {"0", "a code that is always the same"},
    {"NLS::format() call from class: ", kDeveloper},
    {"NYXPropConstant assignment operator should never be called!", kDeveloper},
    {"NYXUtils::getUID not implemented", kDeveloper},
    {"NYXUtils::mkGroupWrite not implemented", kDeveloper},
    {"NewByteArray failed", "the virtual machine's own exception stands in its place"},
    {"RAS assignment operator should never be called!", kDeveloper},
    {"RAS copy constructor should never be called!", kDeveloper},
    {"Trace assignment operator should never be called!", kDeveloper},
    {"Trace copy constructor should never be called!", kDeveloper},
    {"an exception that is no std::exception", kDeveloper},
    {"bad locale name", kNoFailure},
    {"not supported!", kDeveloper},
    {"the client is busy with a request of this thread", kDeveloper},
    {"the native handle is not that of an open object", kDeveloper},
    {"the system names no default locale", kNoFailure},
};

// Literal texts that are printed, with the reason.
const std::map<std::string, std::string> kLiteralPrints = {
    {": ", kPunctuation},
    {"DEBUG: ", "trace and events of a descriptor without a logger, which only tests have"},
    {"an exception that is no std::exception", kDeveloper},
    {"escaped from a thread", kDeveloper},
};

// What goes to the event log without being formatted on the spot, with the reason.
const std::map<std::string, std::string> kOtherEvents = {
    {"\"File: \" + path + \" could not be found for ResourceBundle '\" + catalogue_->name + \"'\"",
     "the catalogue is missing"},
    {"exception.getMessage()", "the text of a failure of the library"},
    {"message", "formatted before a lock was taken"},
};

// The string literals, apart from keys and the names of Java classes, in the arguments of each call or construction
// that the pattern begins.
Texts literalsOf(const std::string& code, const std::regex& start) {
  const std::regex literal(R"rx("((?:[^"\\]|\\.)*)")rx");
  Texts found;
  for (std::sregex_iterator i(code.begin(), code.end(), start), end; i != end; ++i) {
    const std::size_t begin = static_cast<std::size_t>(i->position() + i->length());
    std::size_t at = begin;
    for (int open = 1; at < code.size() && open > 0 && code[at] != ';'; ++at) {
      if (code[at] == '"') at = literalEnd(code, at) - 1;
      if (code[at] == '(' || code[at] == '{') ++open;
      if (code[at] == ')' || code[at] == '}') --open;
    }
    const std::string arguments = code.substr(begin, at - begin);
    for (std::sregex_iterator j(arguments.begin(), arguments.end(), literal); j != end; ++j) {
      const std::string text = (*j)[1];
      const bool isName = text.rfind("KTBNV", 0) == 0 || text.rfind("com/", 0) == 0 || text.rfind("java/", 0) == 0;
      if (!isName) found.push_back(text);
    }
  }
  return found;
}

Texts literalExceptions(const std::string& code) {
  return literalsOf(code, std::regex(R"(\b(?:\w*Exception|runtime_error)(?:>|\s+\w+)?\s*[({])"));
}

Texts literalPrints(const std::string& code) {
  Texts found = literalsOf(code, std::regex(R"(\b(?:print|printError|endProcess)\s*\()"));
  const std::regex line(R"rx(\b(?:line|cerr|cout)\s*<<\s*"([^"]*)")rx");
  for (std::sregex_iterator i(code.begin(), code.end(), line), end; i != end; ++i) found.push_back((*i)[1]);
  return found;
}

Texts unformattedEvents(const std::string& code) {
  const std::regex event(R"(\bEventLog::(?:config|info|warning|error)NoFormat\s*\(\s*\w+\s*,\s*([^;]*)\)\s*;)");
  Texts found;
  for (std::sregex_iterator i(code.begin(), code.end(), event), end; i != end; ++i) {
    const std::string text = trimmed((*i)[1].str());
    if (text.rfind("NLS::format(", 0) != 0) found.push_back(text);
  }
  return found;
}

template <class Search>
Texts strangersIn(const Search& search, const std::map<std::string, std::string>& allowed) {
  Texts strangers;
  for (const fs::path& file : sourceFiles({"src", "include"})) {
    for (const std::string& text : search(withoutComments(readFile(file)))) {
      if (allowed.count(text) == 0) strangers.push_back(fs::relative(file, kSourceTree).string() + ": " + text);
    }
  }
  return strangers;
}

template <class Search>
Texts unusedOf(const Search& search, std::map<std::string, std::string> allowed) {
  for (const fs::path& file : sourceFiles({"src", "include"})) {
    for (const std::string& text : search(withoutComments(readFile(file)))) allowed.erase(text);
  }
  Texts unused;
  for (const auto& [text, reason] : allowed) unused.push_back(text);
  return unused;
}

TEST(TextGate, FindsALiteralTextOfAnException) {
  EXPECT_EQ(
      literalExceptions("throw NYXException(\"one\"); const IPCException e(\"two\");\nf(std::runtime_error(\n\"3\"))"),
      (Texts{"one", "two", "3"}));
  EXPECT_EQ(literalExceptions("throw NYXException(text); trace.failure<NYXException>(\"KTBNV0001_A\", a);"), Texts{});
}

TEST(TextGate, FindsALiteralInsideTheTextOfAnException) {
  EXPECT_EQ(literalExceptions(
                "throw NYXException(path + \" is \" + f(\"bad\"));\nauto x = make_unique<NYXException>(\"a\");"),
            (Texts{" is ", "bad", "a"}));
  EXPECT_EQ(literalExceptions("throw NYXIOException{\"b\"}; throw NYXException(NLS::format(rd, \"KTBNV0001_A\"));"),
            Texts{"b"});
}

TEST(TextGate, FindsALiteralOnItsWayToAStream) {
  EXPECT_EQ(literalPrints("internal::print(std::cerr, type + \": \" + text); endProcess(\"gone\", x);"),
            (Texts{": ", "gone"}));
  EXPECT_EQ(literalPrints("line << \"DEBUG: \" << record; std::cerr << \"x\";"), (Texts{"DEBUG: ", "x"}));
}

TEST(TextGate, WhatIsPrintedComesFromTheCatalogue) {
  EXPECT_EQ(strangersIn(literalPrints, kLiteralPrints), Texts{});
  EXPECT_EQ(unusedOf(literalPrints, kLiteralPrints), Texts{});
}

TEST(TextGate, FindsAnEventThatIsNotFormatted) {
  EXPECT_EQ(unformattedEvents("EventLog::infoNoFormat(rd, \"Started.\");\nEventLog::errorNoFormat(\n  rd,\n  text);"),
            (Texts{"\"Started.\"", "text"}));
  EXPECT_EQ(unformattedEvents("EventLog::warningNoFormat(rd, NLS::format(rd, \"KTBNV0001_A\", f(a)));"), Texts{});
}

TEST(TextGate, ExceptionsTakeTheirTextsFromTheCatalogue) {
  EXPECT_EQ(strangersIn(literalExceptions, kLiteralExceptions), Texts{});
  EXPECT_EQ(unusedOf(literalExceptions, kLiteralExceptions), Texts{});
}

TEST(TextGate, EventsTakeTheirTextsFromTheCatalogue) {
  EXPECT_EQ(strangersIn(unformattedEvents, kOtherEvents), Texts{});
  EXPECT_EQ(unusedOf(unformattedEvents, kOtherEvents), Texts{});
}

}  // namespace
}  // namespace tessel::host
