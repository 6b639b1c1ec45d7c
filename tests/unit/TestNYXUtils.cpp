#include <windows.h>

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "support/Captures.h"
#include "support/Records.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

using testing::HasSubstr;

// Sets or, with null, removes an environment variable for a scope.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    std::array<char, 32767> old{};
    wasSet_ = GetEnvironmentVariableA(name, old.data(), static_cast<DWORD>(old.size())) != 0;
    old_ = old.data();
    SetEnvironmentVariableA(name, value);
  }
  ~Variable() { SetEnvironmentVariableA(name_.c_str(), wasSet_ ? old_.c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool wasSet_ = false;
};

std::string systemText(DWORD error) {
  std::array<char, 4096> text{};
  FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text.data(),
                 static_cast<DWORD>(text.size()), nullptr);
  std::string message = text.data();
  while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) message.pop_back();
  return message;
}

struct TokenGroups {
  std::set<std::string> names;
  unsigned unnamed = 0;
};

// The groups of this process as the system tells them.
TokenGroups readGroups() {
  TokenGroups groups;
  HANDLE token = nullptr;
  EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
  std::vector<std::max_align_t> buffer(4096);
  DWORD size = static_cast<DWORD>(buffer.size() * sizeof buffer[0]);
  EXPECT_TRUE(GetTokenInformation(token, ::TokenGroups, buffer.data(), size, &size));
  CloseHandle(token);
  const auto* list = reinterpret_cast<const TOKEN_GROUPS*>(buffer.data());
  for (DWORD i = 0; i < list->GroupCount; ++i) {
    std::array<char, 256> name{};
    std::array<char, 271> domain{};
    DWORD nameLength = 256;
    DWORD domainLength = 271;
    SID_NAME_USE use{};
    if (LookupAccountSidA(nullptr, list->Groups[i].Sid, name.data(), &nameLength, domain.data(), &domainLength, &use)) {
      groups.names.insert(name.data());
    } else {
      ++groups.unnamed;
    }
  }
  return groups;
}

TEST(NYXUtilsGroups, TheUserIsInEveryNamedGroupOfTheToken) {
  const TokenGroups groups = readGroups();
  ASSERT_FALSE(groups.names.empty());
  for (const std::string& name : groups.names) {
    EXPECT_EQ(NYXUtils::isCurrentUserMemberOfGroup(name), !name.empty()) << name;
  }
}

TEST(NYXUtilsGroups, NamesAreComparedWithCase) {
  const TokenGroups groups = readGroups();
  unsigned compared = 0;
  for (const std::string& name : groups.names) {
    std::string upper = name;
    for (char& c : upper) {
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    if (groups.names.count(upper) != 0) continue;
    EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup(upper)) << upper;
    ++compared;
  }
  EXPECT_GT(compared, 0U);
}

TEST(NYXUtilsGroups, TheWholeNameIsComparedWithoutItsDomain) {
  const std::string name = *readGroups().names.rbegin();
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup(name.substr(0, name.size() - 1)));
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup(name + " "));
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("BUILTIN\\" + name));
}

TEST(NYXUtilsGroups, TheUserIsInNoGroupThatTheTokenDoesNotHave) {
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("no such group"));
  EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup(std::string(10'000, 'g')));
}

TEST(NYXUtilsGroups, TheEmptyNameMatchesNoGroup) { EXPECT_FALSE(NYXUtils::isCurrentUserMemberOfGroup("")); }

TEST(NYXUtilsGroups, NobodyHasASpecialAuthority) {
  for (const char* authority : {"", "Administrators", "any"}) {
    EXPECT_FALSE(NYXUtils::doesCurrentUserHaveSpecialAuthority(authority));
  }
}

TEST(NYXUtilsGroups, SpecialAuthorityTracesEntryAndResult) {
  const TraceScope trace("NYXUtils=FLOW");
  const RecordingHandler log("NYXUtils");
  NYXUtils::doesCurrentUserHaveSpecialAuthority("any");
  const auto records = log.records();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_THAT(records[0].message, HasSubstr("{  doesCurrentUserHaveSpecialAuthority [any]"));
  EXPECT_THAT(records[1].message, HasSubstr("returns [false] bool"));
}

TEST(NYXUtilsGroups, ThereIsNoNumericIdentity) {
  using Values = std::vector<std::string>;
  const Captures captures;
  EXPECT_EQ(thrownBy<NYXException>([] { NYXUtils::getUID(); }), "NYXUtils::getUID not implemented");
  EXPECT_EQ(captures.values("Class:"), Values{"NYXUtils"});
  EXPECT_EQ(captures.values("Method:"), Values{"getUID"});
  EXPECT_EQ(captures.values("Probe:"), Values{"FFDC_001"});
  EXPECT_EQ(captures.values("Cause:"), Values{"class NYXException: NYXUtils::getUID not implemented"});
}

TEST(NYXUtilsEnvironment, GivesAVariablesValue) {
  const Variable variable("TESSEL_TEST", "a value; with = signs");
  EXPECT_EQ(NYXUtils::getenv("TESSEL_TEST"), "a value; with = signs");
}

TEST(NYXUtilsEnvironment, AnUnsetVariableIsEmpty) {
  const Variable variable("TESSEL_TEST", nullptr);
  EXPECT_EQ(NYXUtils::getenv("TESSEL_TEST"), "");
}

TEST(NYXUtilsEnvironment, GivesAValueOfTheGreatestLength) {
  const std::string longest(32766, 'v');
  const Variable variable("TESSEL_TEST", longest.c_str());
  EXPECT_EQ(NYXUtils::getenv("TESSEL_TEST"), longest);
}

TEST(NYXUtilsEnvironment, SetsAndReplacesAVariable) {
  const Variable variable("TESSEL_TEST", nullptr);
  NYXUtils::setenv("TESSEL_TEST", "1");
  EXPECT_EQ(NYXUtils::getenv("TESSEL_TEST"), "1");
  NYXUtils::setenv("TESSEL_TEST", "22");
  EXPECT_EQ(NYXUtils::getenv("TESSEL_TEST"), "22");
}

TEST(NYXUtilsEnvironment, TheProductRootIsTheFirstVariableThatIsNotEmpty) {
  messageText("KTBNV0110_SETENV_FAILED", "", "");  // the catalogue is read while the root is still right
  const Variable first("KTB_PROD", "C:\\first");
  const Variable second("NYX_PROD", "C:\\second");
  EXPECT_EQ(NYXUtils::getKTBProdRoot(), "C:\\first");
  const Variable none("KTB_PROD", nullptr);
  EXPECT_EQ(NYXUtils::getKTBProdRoot(), "C:\\second");
  const Variable neither("NYX_PROD", nullptr);
  EXPECT_EQ(NYXUtils::getKTBProdRoot(), "");
}

TEST(NYXUtilsEnvironment, PutsTheBinariesInFrontOfPath) {
  const Variable path("PATH", "C:\\old;C:\\older");
  NYXUtils::addBinDirToPath("C:\\product\\bin");
  EXPECT_EQ(NYXUtils::getenv("PATH"), "C:\\product\\bin\\..\\bin64;C:\\old;C:\\older");
}

TEST(NYXUtilsEnvironment, AddsNoEmptyEntryToPath) {
  const Variable path("PATH", nullptr);
  NYXUtils::addBinDirToPath("C:\\product\\bin");
  EXPECT_EQ(NYXUtils::getenv("PATH"), "C:\\product\\bin\\..\\bin64");
}

TEST(NYXUtilsPaths, TheSeparatorIsABackslash) { EXPECT_EQ(NYXUtils::separator(), "\\"); }

TEST(NYXUtilsPaths, TheCurrentDirectoryIsTheSystems) {
  std::array<char, MAX_PATH + 1> directory{};
  GetCurrentDirectoryA(static_cast<DWORD>(directory.size()), directory.data());
  EXPECT_EQ(NYXUtils::getCwd(), directory.data());
  EXPECT_FALSE(NYXUtils::getCwd().empty());
}

TEST(NYXUtilsPaths, TheParentEndsBeforeTheLastSeparatorOfEitherKind) {
  EXPECT_EQ(NYXUtils::getParent("a/b/c"), "a/b");
  EXPECT_EQ(NYXUtils::getParent("a\\b\\c"), "a\\b");
  EXPECT_EQ(NYXUtils::getParent("a/b\\c"), "a/b");
  EXPECT_EQ(NYXUtils::getParent("a\\b/c"), "a\\b");
  EXPECT_EQ(NYXUtils::getParent("a/b/"), "a/b");
  EXPECT_EQ(NYXUtils::getParent("/a"), "");
}

TEST(NYXUtilsPaths, WithoutSeparatorThereIsNoParent) {
  EXPECT_EQ(NYXUtils::getParent("name"), "");
  EXPECT_EQ(NYXUtils::getParent(""), "");
}

TEST(NYXUtilsPaths, TheNameBeginsBehindTheLastSlashOnly) {
  EXPECT_EQ(NYXUtils::getName("a/b/c"), "c");
  EXPECT_EQ(NYXUtils::getName("a\\b\\c"), "a\\b\\c");
  EXPECT_EQ(NYXUtils::getName("a/b\\c"), "b\\c");
  EXPECT_EQ(NYXUtils::getName("a/b/"), "");
  EXPECT_EQ(NYXUtils::getName("name"), "name");
  EXPECT_EQ(NYXUtils::getName(""), "");
}

TEST(NYXUtilsErrors, TheTextIsTheSystemsWithoutItsLineEnd) {
  for (const int error : {2, 5, 109, 231}) {
    EXPECT_EQ(NYXUtils::getLastErrorMessage(error), systemText(static_cast<DWORD>(error)));
  }
  EXPECT_NE(NYXUtils::getLastErrorMessage(5), "5");
}

TEST(NYXUtilsErrors, WithoutASystemTextItIsTheNumber) {
  EXPECT_EQ(NYXUtils::getLastErrorMessage(1234567), "1234567");
  EXPECT_EQ(NYXUtils::getLastErrorMessage(-7), "-7");
}

TEST(NYXUtilsErrors, WithoutANumberItIsThatOfTheCallingThread) {
  SetLastError(ERROR_ACCESS_DENIED);
  EXPECT_EQ(NYXUtils::getLastErrorMessage(), systemText(ERROR_ACCESS_DENIED));
  SetLastError(1234567);
  EXPECT_EQ(NYXUtils::getLastErrorMessage(), "1234567");
}

TEST(NYXUtilsProcess, ANewSessionIsTracedAndNothingElse) {
  const TraceScope trace("NYXUtils=FLOW");
  const RecordingHandler log("NYXUtils");
  NYXUtils::newProcessSession();
  EXPECT_EQ(recordsOf(log, LogRecordType::ENTRY, "newProcessSession").size(), 1U);
  EXPECT_EQ(recordsOf(log, LogRecordType::EXIT, "newProcessSession").size(), 1U);
  EXPECT_EQ(log.records().size(), 2U);
}

}  // namespace
}  // namespace tessel::test
