// What a child gets of the arguments: every byte of its command line, and how the C run-time takes it apart.
#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <sstream>

#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "support/LaunchedProcess.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using Words = std::vector<std::string>;

std::string bytesOfDigits(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

struct Received {
  std::string commandLine;
  Words arguments;
};

Received received(NYXProcess& process) {
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  Words lines;
  std::istringstream text(output.data());
  for (std::string line; std::getline(text, line);) lines.push_back(bytesOfDigits(line));
  if (lines.empty()) return {};
  return {lines.front(), Words(lines.begin() + 1, lines.end())};
}

Received receivedBy(const Words& arguments) {
  LaunchedProcess process(child(arguments));
  return received(process);
}

const std::string kQuotedProgram = '"' + kChildProgram + '"';

struct Row {
  Words arguments;
  std::string line;  // behind the program and a blank
  Words atTheChild;  // as the C run-time reads the line
};

const std::vector<Row>& rows() {
  static const std::vector<Row> all{
      // Everything is quoted, whether it needs to be or not.
      {{}, R"()", {}},
      {{"a"}, R"("a")", {"a"}},
      {{"a b"}, R"("a b")", {"a b"}},
      {{""}, R"("")", {""}},
      {{" "}, R"(" ")", {" "}},
      {{"-v"}, R"("-v")", {"-v"}},
      {{"/c"}, R"("/c")", {"/c"}},
      {{"a\tb"}, "\"a\tb\"", {"a\tb"}},
      {{"*.cpp"}, R"("*.cpp")", {"*.cpp"}},
      {{"?"}, R"("?")", {"?"}},
      {{"%PATH%"}, R"("%PATH%")", {"%PATH%"}},
      {{"a&b|c<d>e^f"}, R"("a&b|c<d>e^f")", {"a&b|c<d>e^f"}},
      {{"'a b'"}, R"("'a b'")", {"'a b'"}},
      {{"a=b;c,d"}, R"("a=b;c,d")", {"a=b;c,d"}},
      {{"line\nend"}, "\"line\nend\"", {"line\nend"}},
      // The first argument keeps what stands before its first colon outside.
      {{R"(C:\dir x\f)"}, R"(C:"\dir x\f")", {R"(C:\dir x\f)"}},
      {{R"(C:\dir x\f)", "-v"}, R"(C:"\dir x\f" "-v")", {R"(C:\dir x\f)", "-v"}},
      {{R"(C:\Program Files\x)"}, R"(C:"\Program Files\x")", {R"(C:\Program Files\x)"}},
      {{"C:"}, R"(C:"")", {"C:"}},
      {{":"}, R"(:"")", {":"}},
      {{":a"}, R"(:"a")", {":a"}},
      {{"a:b:c"}, R"(a:"b:c")", {"a:b:c"}},
      {{"http://host/a b"}, R"(http:"//host/a b")", {"http://host/a b"}},
      {{"a b:c"}, R"(a b:"c")", {"a", "b:c"}},
      {{"-file:C:\\x"}, R"(-file:"C:\x")", {"-file:C:\\x"}},
      {{R"(\\host\share\f)"}, R"("\\host\share\f")", {R"(\\host\share\f)"}},
      // Those behind it do not.
      {{"a", R"(C:\dir x\f)"}, R"("a" "C:\dir x\f")", {"a", R"(C:\dir x\f)"}},
      {{"a", "b:c"}, R"("a" "b:c")", {"a", "b:c"}},
      {{"a:b", "c:d", "e:f"}, R"(a:"b" "c:d" "e:f")", {"a:b", "c:d", "e:f"}},
      {{"", "C:"}, R"("" "C:")", {"", "C:"}},
      // What begins with a quotation mark is passed as it is, whatever follows.
      {{R"("a b")"}, R"("a b")", {"a b"}},
      {{R"("C:\a b")"}, R"("C:\a b")", {R"(C:\a b)"}},
      {{R"("a":b)"}, R"("a":b)", {"a:b"}},
      {{"a", R"("b c")"}, R"("a" "b c")", {"a", "b c"}},
      {{R"("a" "b")"}, R"("a" "b")", {"a", "b"}},
      {{"a", R"("b\"c")"}, R"("a" "b\"c")", {"a", R"(b"c)"}},
      {{R"("a)", "b"}, R"("a "b")", {"a b"}},
      // Nothing inside is escaped: the child may read something else.
      {{R"(a"b)"}, R"("a"b")", {"ab"}},
      {{R"(a"b)", "c"}, R"("a"b" "c")", {R"(ab c)"}},
      {{R"(say "hi")", "x"}, R"("say "hi"" "x")", {"say hi", "x"}},
      {{R"(a\)"}, R"("a\")", {R"(a")"}},
      {{R"(a\)", "b"}, R"("a\" "b")", {R"(a" b)"}},
      {{R"(a\\)", "b"}, R"("a\\" "b")", {R"(a\)", "b"}},
      {{R"(C:\)", "b"}, R"(C:"\" "b")", {R"(C:" b)"}},
      {{R"(a\"b)"}, R"("a\"b")", {R"(a"b)"}},
      {{R"(a\b\c)"}, R"("a\b\c")", {R"(a\b\c)"}},
      {{R"(a:"b)"}, R"(a:""b")", {"a:b"}},
      // In order, joined by one blank each.
      {{"a", "b", "c", "d", "e"}, R"("a" "b" "c" "d" "e")", {"a", "b", "c", "d", "e"}},
      {{"a", "", "b"}, R"("a" "" "b")", {"a", "", "b"}},
      {{"a ", " b"}, R"("a " " b")", {"a ", " b"}},
  };
  return all;
}

class ProcessArguments : public testing::TestWithParam<std::size_t> {};

TEST_P(ProcessArguments, ReachTheChildByteByByte) {
  const Row& row = rows()[GetParam()];
  const Received child = receivedBy(row.arguments);
  EXPECT_EQ(child.commandLine, kQuotedProgram + ' ' + row.line);
  EXPECT_EQ(child.arguments, row.atTheChild);
}

INSTANTIATE_TEST_SUITE_P(AllRows, ProcessArguments, testing::Range(std::size_t{0}, rows().size()));

TEST(ProcessArgumentTable, HasAtLeastFortyRows) { EXPECT_GE(rows().size(), 40U); }

TEST(ProcessArgumentTable, EveryByteButZeroIsPassedOn) {
  std::string bytes;
  for (int c = 1; c < 128; ++c) {
    if (c != '"') bytes += static_cast<char>(c);
  }
  const Received child = receivedBy({"first", bytes});
  EXPECT_EQ(child.commandLine, kQuotedProgram + " \"first\" \"" + bytes + '"');
}

TEST(ProcessArgumentTable, ANullArgumentIsPassedAsAnEmptyOne) {
  std::string program = kChildProgram;
  std::string last = "z";
  std::array<char*, 4> arguments{program.data(), nullptr, nullptr, last.data()};
  NYXProcessImpl process(4, arguments.data());
  const Received child = received(process);
  EXPECT_EQ(child.commandLine, kQuotedProgram + R"( "" "" "z")");
  EXPECT_EQ(child.arguments, (Words{"", "", "z"}));
}

TEST(ProcessArgumentTable, TheArgumentsAreCopied) {
  std::optional<NYXProcessImpl> process;
  {
    ArgumentVector arguments(child({"before"}));
    process.emplace(arguments.count(), arguments.values());
    arguments.values()[1][0] = 'X';
  }
  EXPECT_EQ(received(*process).arguments, Words{"before"});
}

TEST(ProcessArgumentTable, ACommandLineOf32000CharactersIsPassedWhole) {
  const std::string long_(32000 - kQuotedProgram.size() - 3, 'x');
  const Received child = receivedBy({long_});
  EXPECT_EQ(child.commandLine.size(), 32000U);
  EXPECT_EQ(child.arguments, Words{long_});
}

// The system counts the zero byte behind the line, too.
constexpr std::size_t kLongestLine = 32766;

TEST(ProcessArgumentTable, TheLongestCommandLineIsPassedWhole) {
  const std::string rest(kLongestLine - kQuotedProgram.size() - 3, 'x');
  const Received child = receivedBy({rest});
  EXPECT_EQ(child.commandLine.size(), kLongestLine);
  EXPECT_EQ(child.arguments, Words{rest});
}

// Not every system refuses it: what this one does to the same line is what is reported.
TEST(ProcessArgumentTable, OneCharacterMoreIsAnsweredByTheSystem) {
  const std::string rest(kLongestLine + 1 - kQuotedProgram.size() - 3, 'x');
  std::string line = kQuotedProgram + " \"" + rest + '"';
  STARTUPINFOA start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION bare{};
  const BOOL launched = CreateProcessA(kChildProgram.c_str(), std::string(line).data(), nullptr, nullptr, FALSE,
                                       CREATE_SUSPENDED, nullptr, nullptr, &start, &bare);
  const DWORD error = launched ? NO_ERROR : GetLastError();
  if (launched) {
    TerminateProcess(bare.hProcess, 0);
    CloseHandle(bare.hThread);
    CloseHandle(bare.hProcess);
    EXPECT_EQ(receivedBy({rest}).commandLine, line);
    return;
  }
  const std::string text = (SetLastError(error), NYXUtils::getLastErrorMessage());
  LaunchedProcess process(child({rest}));
  EXPECT_EQ(thrownBy<NYXException>([&] { process.start(); }),
            messageText("KTBNV0007_UNABLE_TO_CREATE_PROCESS", line, std::to_string(error), text));
}

// By way of the system's own characters and back.
std::string throughTheCodePage(const std::string& bytes) {
  std::array<wchar_t, 256> wide{};
  std::array<char, 256> back{};
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(), 256);
  const int size = WideCharToMultiByte(CP_ACP, 0, wide.data(), length, back.data(), 256, nullptr, nullptr);
  return {back.data(), static_cast<std::size_t>(size)};
}

// All of those that the code page of the system has a character for; where one takes several bytes, a few of them.
TEST(ProcessArgumentTable, BytesBeyondAsciiArriveAsTheyAre) {
  std::string bytes;
  for (int c = 128; c < 256; ++c) {
    const std::string byte(1, static_cast<char>(c));
    if (throughTheCodePage(byte) == byte) bytes += byte;
  }
  if (GetACP() == CP_UTF8) bytes = "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80";
  ASSERT_EQ(throughTheCodePage(bytes), bytes);
  EXPECT_GE(bytes.size(), 9U);
  const Received child = receivedBy({"first", bytes});
  EXPECT_EQ(child.commandLine, kQuotedProgram + " \"first\" \"" + bytes + '"');
  EXPECT_EQ(child.arguments, (Words{"first", bytes}));
}

// What the helper quotes comes back unchanged, even where the process object itself would lose it.
TEST(QuoteArgument, GivesEveryArgumentBackToTheChild) {
  const Words arguments{"",       "a",     " ",           "a b",        R"(a"b)",      R"(")",    R"(\)",
                        R"(\\)",  R"(\")", R"(a\)",       R"(a b\)",    R"(a\\)",      R"(a\"b)", R"(a\\"b)",
                        R"(C:\)", "C:a b", R"("a b")",    R"("")",      R"(say "hi")", "a\tb",    R"(\\host\x y\)",
                        "*",      "a'b",   R"(\a\"\\"b)", R"(x"y"z" ")"};
  Words quoted;
  for (const std::string& argument : arguments) quoted.push_back(NYXProcess::quoteArgument(argument));
  EXPECT_EQ(receivedBy(quoted).arguments, arguments);
}

TEST(QuoteArgument, DoublesBackslashesOnlyBeforeAQuotationMark) {
  EXPECT_EQ(NYXProcess::quoteArgument(""), R"("")");
  EXPECT_EQ(NYXProcess::quoteArgument(R"(C:\a b)"), R"("C:\a b")");
  EXPECT_EQ(NYXProcess::quoteArgument(R"(a\)"), R"("a\\")");
  EXPECT_EQ(NYXProcess::quoteArgument(R"(a\\b)"), R"("a\\b")");
  EXPECT_EQ(NYXProcess::quoteArgument(R"(a"b)"), R"("a\"b")");
  EXPECT_EQ(NYXProcess::quoteArgument(R"(a\"b)"), R"("a\\\"b")");
}

}  // namespace
}  // namespace tessel::test
