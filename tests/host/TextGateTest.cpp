// No text that operators see is written in the sources: it comes from the catalogues, or it is listed here with the
// reason why it cannot.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "host/SourceText.h"

namespace tessel::host {
namespace {

using Texts = std::vector<std::string>;
using Place = std::pair<std::string, std::string>;  // a file, and a text in it
// With the reason of each.
using AllowedAnywhere = std::map<std::string, std::string>;
using AllowedInFile = std::map<Place, std::string>;

constexpr const char* kDeveloper = "an error of the program's developer, which only a capture shows";
constexpr const char* kPunctuation = "it says nothing";
constexpr const char* kCapture = "what a Java machine lacks or threw, which only a capture shows";
constexpr const char* kNoFailure = "only trace shows it, and the plain catalogue is taken";
constexpr const char* kWhiteSpace = "what is passed over between words";

// Literal texts of exceptions, with the reason.
const AllowedAnywhere kLiteralExceptions = {
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
const AllowedAnywhere kLiteralPrints = {
    {": ", kPunctuation},
    {"DEBUG: ", "trace and events of a descriptor without a logger, which only tests have"},
    {"an exception that is no std::exception", kDeveloper},
    {"escaped from a thread", kDeveloper},
};

// What goes to the event log without being formatted on the spot, with the reason.
const AllowedInFile kOtherEvents = {
    {{"src/platform/pc/share/IPCClientConnectionListener.cpp", "message"},
     "formatted before: trace shows it too, or the caller did it"},
    {{"src/share/FFDC.cpp", "exception.getMessage()"}, "the text of a failure of the library"},
    {{"src/share/ResourceBundle.cpp",
      "\"File: \" + path + \" could not be found for ResourceBundle '\" + catalogue_->name + \"'\""},
     "the catalogue is missing"},
};

// Texts of several words that have a name, with the reason.
const AllowedInFile kNamedTexts = {
    {{"src/internal/PropertiesText.cpp", " \\t\\n\\r"}, kWhiteSpace},
    {{"src/internal/jni/Guard.cpp", "unknown native exception"}, "only an error in the sources throws something else"},
    {{"src/internal/jni/JavaSink.cpp", "Exception traceback written to stderr"}, kCapture},
    {{"src/internal/jni/JavaSink.cpp", "JNI environment not available"}, kCapture},
    {{"src/internal/jni/JavaSink.cpp", "calling Java method failed with an exception"}, kCapture},
    {{"src/platform/pc/share/NYXProcessImpl.cpp", "\\\" "}, "between a program and its arguments"},
    {{"src/share/JavaCallbackIPCListener.cpp", "byte [] com.kelvo.tessel.ipc.IPCServer.onMessage(byte [])"},
     "a method's name, an insert"},
    {{"src/share/JavaEventLogHandler.cpp", "com.kelvo.tessel.ras.EventLog class not available"}, kCapture},
    {{"src/share/JavaEventLogHandler.cpp", "com.kelvo.tessel.ras.EventLog.configNoFormat method not available"},
     kCapture},
    {{"src/share/JavaEventLogHandler.cpp", "com.kelvo.tessel.ras.EventLog.errorNoFormat method not available"},
     kCapture},
    {{"src/share/JavaEventLogHandler.cpp", "com.kelvo.tessel.ras.EventLog.infoNoFormat method not available"},
     kCapture},
    {{"src/share/JavaEventLogHandler.cpp", "com.kelvo.tessel.ras.EventLog.warningNoFormat method not available"},
     kCapture},
    {{"src/share/JavaTraceFileLogHandler.cpp", "com.kelvo.tessel.ras.Trace class not available"}, kCapture},
    {{"src/share/JavaTraceFileLogHandler.cpp", "com.kelvo.tessel.ras.Trace.data method not available"}, kCapture},
    {{"src/share/JavaTraceFileLogHandler.cpp", "com.kelvo.tessel.ras.Trace.entry method not available"}, kCapture},
    {{"src/share/JavaTraceFileLogHandler.cpp", "com.kelvo.tessel.ras.Trace.exit (with no return) method not available"},
     kCapture},
    {{"src/share/JavaTraceFileLogHandler.cpp", "com.kelvo.tessel.ras.Trace.exit method not available"}, kCapture},
    {{"src/share/JavaTraceFileLogHandler.cpp", "com.kelvo.tessel.ras.Trace.throwing method not available"}, kCapture},
    {{"src/share/NLS.cpp", " were supplied"}, kDeveloper},
    {{"src/share/NativePropertyItem.cpp", " \\t\\n\\v\\f\\r"}, kWhiteSpace},
};

// The string literals, apart from keys and the names of Java classes, in each call, construction or definition that the
// pattern begins.
Texts literalsOf(const std::string& code, const std::regex& start) {
  Texts found;
  for (std::sregex_iterator i(code.begin(), code.end(), start), end; i != end; ++i) {
    std::size_t at = static_cast<std::size_t>(i->position() + i->length());
    for (int open = 1; at < code.size() && open > 0 && code[at] != ';'; ++at) {
      if (code[at] == '(' || code[at] == '{') ++open;
      if (code[at] == ')' || code[at] == '}') --open;
      if (!startsLiteral(code, at)) continue;
      const std::size_t behind = literalEnd(code, at);
      const std::string text = code.substr(at + 1, behind - at - 2);
      const bool isName = text.rfind("KTBNV", 0) == 0 || text.rfind("com/", 0) == 0 || text.rfind("java/", 0) == 0;
      if (code[at] == '"' && !isName) found.push_back(text);
      at = behind - 1;
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

// One word is a name or a format; people read several.
Texts namedTexts(const std::string& code) {
  const std::regex definition(
      R"((?:\bk[A-Z]\w*(?:\[\])?\s*(?:=(?!=)|\{)|\b(?:const std::string|string_view|char\*)\s+\w+(?:\[\])?\s*[={(]))");
  Texts found;
  for (const std::string& text : literalsOf(code, definition)) {
    if (text.find(' ') != std::string::npos) found.push_back(text);
  }
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
std::vector<Place> foundBy(const Search& search) {
  std::vector<Place> found;
  for (const fs::path& file : sourceFiles({"src", "include"})) {
    const std::string name = fs::relative(file, kSourceTree).generic_string();
    for (const std::string& text : search(withoutComments(readFile(file)))) found.emplace_back(name, text);
  }
  return found;
}

std::string keyOf(const Place& place, const AllowedAnywhere&) { return place.second; }
Place keyOf(const Place& place, const AllowedInFile&) { return place; }

std::string nameOf(const std::string& text) { return text; }
std::string nameOf(const Place& place) { return place.first + ": " + place.second; }

template <class Search, class Allowed>
Texts strangersIn(const Search& search, const Allowed& allowed) {
  Texts strangers;
  for (const Place& place : foundBy(search)) {
    if (allowed.count(keyOf(place, allowed)) == 0) strangers.push_back(nameOf(place));
  }
  return strangers;
}

template <class Search, class Allowed>
Texts unusedOf(const Search& search, Allowed allowed) {
  for (const Place& place : foundBy(search)) allowed.erase(keyOf(place, allowed));
  Texts unused;
  for (const auto& [key, reason] : allowed) unused.push_back(nameOf(key));
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

TEST(TextGate, FindsATextThatHasAName) {
  EXPECT_EQ(namedTexts("constexpr const char* kOne = \"a b\"; constexpr std::string_view two(\"c d\");\n"
                       "const std::string three = f(x) + \" e\"; constexpr Row kRows[] = {{1, \"f g\"}, {2, \"h \"}};"),
            (Texts{"a b", "c d", " e", "f g", "h "}));
  EXPECT_EQ(namedTexts("const char* name = \"word\"; const std::string key = \"KTBNV0001_A\" + '\"' + x + \" y\";"),
            Texts{" y"});
  EXPECT_EQ(namedTexts("if (kOne == \"a b\") f(kTwo, \"c d\"); std::string text = \"e f\";"), Texts{});
}

TEST(TextGate, TextsThatHaveANameComeFromTheCatalogue) {
  EXPECT_EQ(strangersIn(namedTexts, kNamedTexts), Texts{});
  EXPECT_EQ(unusedOf(namedTexts, kNamedTexts), Texts{});
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

TEST(TextGate, WhatIsAllowedInOneFileIsNotAllowedInAnother) {
  const AllowedInFile allowed = {{{"src/share/FFDC.cpp", "message"}, "a text of another file"}};
  EXPECT_EQ(unusedOf(unformattedEvents, allowed), Texts{"src/share/FFDC.cpp: message"});
}

TEST(TextGate, EventsTakeTheirTextsFromTheCatalogue) {
  EXPECT_EQ(strangersIn(unformattedEvents, kOtherEvents), Texts{});
  EXPECT_EQ(unusedOf(unformattedEvents, kOtherEvents), Texts{});
}

}  // namespace
}  // namespace tessel::host
