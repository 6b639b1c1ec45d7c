// Rules of the sources that no compiler knows.
#include <gtest/gtest.h>

#include <regex>

#include "host/SourceText.h"

namespace tessel::host {
namespace {

std::string pathInTree(const fs::path& file) { return fs::relative(file, kSourceTree).generic_string(); }

bool startsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

// Places of the pattern in the code of a file.
std::vector<std::string> places(const fs::path& file, const std::regex& pattern) {
  std::vector<std::string> found;
  const std::string code = withoutComments(readFile(file));
  for (std::sregex_iterator i(code.begin(), code.end(), pattern), end; i != end; ++i) {
    found.push_back(shown(file, code, static_cast<std::size_t>(i->position())) + ": " + trimmed(i->str()));
  }
  return found;
}

// Every file below the folders that holds the pattern, apart from those whose path starts with `allowed`.
std::vector<std::string> strangers(const std::vector<std::string>& folders, const std::regex& pattern,
                                   const std::string& allowed) {
  std::vector<std::string> found;
  for (const fs::path& file : sourceFiles(folders)) {
    if (!allowed.empty() && startsWith(pathInTree(file), allowed)) continue;
    const std::vector<std::string> here = places(file, pattern);
    found.insert(found.end(), here.begin(), here.end());
  }
  return found;
}

// Statements that assign to a variable declared as an exception.
std::vector<std::string> assignedExceptions(const std::string& code) {
  const std::regex declaration(
      R"(\b(?:NYX|IPC|File|Property)\w*Exception\s*[&*]?\s*(\w+)\s*[;({=,)]|\bauto\s+(\w+)\s*=\s*\w+\.failure<)");
  std::vector<std::string> found;
  for (std::sregex_iterator i(code.begin(), code.end(), declaration), end; i != end; ++i) {
    const std::string name = (*i)[1].matched ? (*i)[1] : (*i)[2];
    if (std::regex_search(code, std::regex("[;{})]\\s*" + name + "\\s*=[^=]"))) found.push_back(name);
  }
  return found;
}

using Places = std::vector<std::string>;

const std::regex kWindowsHeader(R"(#\s*include\s*[<"]windows\.h[>"])", std::regex::icase);
const std::regex kJavaHeader(R"(#\s*include\s*[<"]jni\.h[>"])");

}  // namespace

TEST(SourceGate, TheTreeIsWhereItIsReadFrom) {
  EXPECT_GT(sourceFiles({"src"}).size(), 40U);
  EXPECT_GT(sourceFiles({"include"}).size(), 40U);
}

TEST(SourceGate, SystemResourcesAreReleasedByTheirOwnersOnly) {
  const std::regex release(R"(\b(CloseHandle|FreeSid|LocalFree|FreeLibrary)\b)");
  EXPECT_FALSE(strangers({"src"}, release, "").empty());
  EXPECT_EQ(strangers({"src", "include"}, release, "src/internal/"), Places());
}

TEST(SourceGate, TheWindowsHeadersHaveOneDoor) {
  EXPECT_EQ(strangers({"src"}, kWindowsHeader, "").size(), 1U);
  EXPECT_EQ(strangers({"src", "include", "tools"}, kWindowsHeader, "src/internal/pc/Platform.h"), Places());
}

TEST(SourceGate, PublicHeadersIncludeNeitherTheWindowsNorTheJavaHeaders) {
  EXPECT_EQ(strangers({"include"}, kWindowsHeader, ""), Places());
  EXPECT_EQ(strangers({"include"}, kJavaHeader, ""), Places());
}

TEST(SourceGate, PublicHeadersIncludeNothingInternal) {
  EXPECT_EQ(strangers({"include"}, std::regex(R"(#\s*include\s*[<"]internal/)"), ""), Places());
}

TEST(SourceGate, PortableClassesDoNotAskForThePlatform) {
  const std::regex question(R"(\b(_WIN32|_WIN64|WIN32|__MINGW\w*|__linux__)\b|internal/pc/)");
  EXPECT_FALSE(strangers({"src"}, question, "").empty());
  EXPECT_EQ(strangers({"src/share"}, question, ""), Places());
}

TEST(SourceGate, PortableInternalHelpersUseNothingOfAPlatform) {
  EXPECT_EQ(strangers({"src/internal"}, std::regex(R"(\b_WIN(32|64)\b|internal/pc/)"), "src/internal/pc/"), Places());
}

TEST(SourceGate, NobodyAssignsAnException) {
  EXPECT_EQ(assignedExceptions("NYXException a(\"x\"); f(); a = b;"), Places{"a"});
  EXPECT_EQ(assignedExceptions("catch (NYXIOException& e) { e = b; }"), Places{"e"});
  EXPECT_EQ(assignedExceptions("auto f = trace.failure<X>(k);\n f = g;"), Places{"f"});
  EXPECT_EQ(assignedExceptions("const NYXException a = b; if (a == b) c = a;"), Places());
  for (const fs::path& file : sourceFiles({"src", "include", "tools"})) {
    EXPECT_EQ(assignedExceptions(withoutComments(readFile(file))), Places()) << pathInTree(file);
  }
}

}  // namespace tessel::host
