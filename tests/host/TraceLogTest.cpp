// Lines become records, whatever else stands in the files.
#include "trace/TraceLog.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "host/TraceLines.h"
#include "support/TempFolder.h"

namespace tessel::host {
namespace {

using tesselctl::trace::ProcessTrace;
using tesselctl::trace::readTrace;
using tesselctl::trace::TraceLog;
using tesselctl::trace::TraceLogReader;
using Texts = std::vector<std::string>;

Texts textsOf(const TraceLog& log) {
  Texts texts;
  for (const ProcessTrace& process : log.processes) {
    for (const auto& record : process.records)
      texts.push_back(std::string(record.method) + '|' + std::string(record.text));
  }
  return texts;
}

Texts processesOf(const TraceLog& log) {
  Texts processes;
  for (const ProcessTrace& process : log.processes) {
    processes.push_back(process.files + " " + process.processId + ": " + std::to_string(process.records.size()));
  }
  return processes;
}

const std::string kHeader = LogRecord::getLogRecordOutputHeader() + '\n';

}  // namespace

TEST(TraceLog, NothingIsInAnEmptyFile) {
  const TraceLog log = readFiles({""});
  EXPECT_TRUE(log.processes.empty());
  EXPECT_EQ(log.fileNames, Texts{"trace0.log"});
  EXPECT_EQ(log.records + log.bannerLines + log.damagedLines, 0U);
}

TEST(TraceLog, LinesThatFollowBelongToTheRecord) {
  const std::string file = traceLine("  {  m [a") + "\nb\n\n c]\n" + traceLine("  }  m") + "\nend\n";
  const TraceLog log = readFiles({file});
  EXPECT_EQ(textsOf(log), (Texts{"m|[a\nb\n\n c]", "m|\nend"}));
  EXPECT_EQ(log.records, 2U);
  EXPECT_EQ(log.damagedLines, 0U);
}

TEST(TraceLog, WindowsLineEndsAreCut) {
  const std::string file = joined({traceLine("  {  m [a"), "b]", traceLine("  }  m")}, "\r\n");
  EXPECT_EQ(textsOf(readFiles({file})), (Texts{"m|[a\r\nb]", "m|"}));
}

TEST(TraceLog, TheLastLineNeedsNoEnd) {
  EXPECT_EQ(textsOf(readFiles({traceLine("  {  m [a]")})), Texts{"m|[a]"});
  EXPECT_EQ(textsOf(readFiles({traceLine("  {  m [a]") + "\nb"})), Texts{"m|[a]\nb"});
}

TEST(TraceLog, RecordsKnowTheirPlace) {
  const TraceLog log = readFiles({traceOf({"  {  a ", "  }  a"}), "\n" + traceOf({"  {  b "})});
  ASSERT_EQ(log.records, 3U);
  const auto& records = log.processes.at(0).records;
  EXPECT_EQ(log.fileNames.at(records[1].file), "trace1.log");
  EXPECT_EQ(records[1].line, 2U);
  EXPECT_EQ(log.fileNames.at(records[2].file), "trace0.log");
  EXPECT_EQ(records[2].line, 2U);
}

TEST(TraceLog, ABannerIsPassedOverAndTellsTheProcess) {
  const TraceLog log = readFiles({bannerOf("264") + traceOf({"  {  m "})});
  EXPECT_EQ(processesOf(log), Texts{"trace%g.log 264: 1"});
  EXPECT_EQ(log.bannerLines, 10U);
  EXPECT_EQ(log.damagedLines, 0U);
}

TEST(TraceLog, ABannerBehindARecordIsNotPartOfIt) {
  const TraceLog log = readFiles({traceLine("  {  m [a") + "\nb]\n" + bannerOf("7") + traceOf({"  {  n "})});
  EXPECT_EQ(textsOf(log), (Texts{"m|[a\nb]", "n|"}));
  EXPECT_EQ(processesOf(log), (Texts{"trace%g.log : 1", "trace%g.log 7: 1"}));
  EXPECT_EQ(log.bannerLines, 10U);
}

TEST(TraceLog, ABannerWithWindowsLineEndsIsOne) {
  std::string file = traceOf({"  {  m "}) + bannerOf("7");
  for (std::size_t at = 0; (at = file.find('\n', at)) != std::string::npos; at += 2) file.insert(at, 1, '\r');
  const TraceLog log = readFiles({file});
  EXPECT_EQ(textsOf(log), Texts{"m|"});
  EXPECT_EQ(log.bannerLines, 10U);
}

TEST(TraceLog, ABannerBehindATornRecordLosesItsFirstLine) {
  const TraceLog log = readFiles({traceLine("  {  m [a") + bannerOf("7")});
  EXPECT_EQ(textsOf(log), Texts{"m|[aDate: Sun Dec 25 14:03:07 2022"});
  EXPECT_EQ(log.bannerLines, 9U);
  EXPECT_EQ(log.processes.back().processId, "7");
}

TEST(TraceLog, TheSameProcessGoesOnBehindItsSecondBanner) {
  const std::string record = traceOf({"  {  m "});
  const TraceLog log = readFiles({bannerOf("7") + record + bannerOf("7") + record + bannerOf("8") + record});
  EXPECT_EQ(processesOf(log), (Texts{"trace%g.log 7: 2", "trace%g.log 8: 1"}));
}

TEST(TraceLog, AProcessGoesOnInTheNextGenerationButNotInTheNextSet) {
  TraceLogReader reader;
  reader.beginSet("a%g.log");
  reader.addFile("a1.log", bannerOf("7") + traceOf({"  {  m "}));
  reader.addFile("a0.log", traceOf({"  }  m"}));
  reader.beginSet("b0.log");
  reader.addFile("b0.log", traceOf({"  {  m "}));
  EXPECT_EQ(processesOf(reader.take()), (Texts{"a%g.log 7: 2", "b0.log : 1"}));
  EXPECT_TRUE(reader.take().processes.empty());
}

TEST(TraceLog, AHeaderWithoutABannerIsPassedOver) {
  const TraceLog log = readFiles({traceLine("  {  m [a") + "\nb]\n" + kHeader + traceOf({"  {  n "})});
  EXPECT_EQ(textsOf(log), (Texts{"m|[a\nb]", "n|"}));
  EXPECT_EQ(log.bannerLines, 2U);
}

TEST(TraceLog, TheTitlesOfABannerWithoutAHeaderAreText) {
  const TraceLog log = readFiles({traceLine("  {  m [a") + "\nBUILD_LEVEL\nPROPERTIES\n" + traceOf({"  {  n "})});
  EXPECT_EQ(textsOf(log), (Texts{"m|[a\nBUILD_LEVEL\nPROPERTIES", "n|"}));
  EXPECT_EQ(log.bannerLines, 0U);
}

TEST(TraceLog, ARuleIsPartOfTheHeaderOnly) {
  const std::string rule(166, '=');
  const TraceLog log = readFiles({kHeader + traceLine("  {  m ") + '\n' + rule + '\n'});
  EXPECT_EQ(textsOf(log), Texts{"m|\n" + rule});
}

TEST(TraceLog, LinesInFrontOfTheFirstRecordAreDamagedUnlessAHeaderFollows) {
  EXPECT_EQ(readFiles({"x\n\ny\n" + traceOf({"  {  m "})}).damagedLines, 3U);
  EXPECT_EQ(readFiles({"x\n\ny\n"}).damagedLines, 3U);
  const TraceLog log = readFiles({"x\n\ny\n" + kHeader});
  EXPECT_EQ(log.damagedLines, 0U);
  EXPECT_EQ(log.bannerLines, 5U);
}

TEST(TraceLog, ADamagedRecordIsCountedWithTheLinesThatFollow) {
  std::string torn = traceLine("  {  lost ");
  torn.resize(60);
  const TraceLog log = readFiles({joined({traceLine("  {  m "), torn, "more", "more", traceLine("  }  m")})});
  EXPECT_EQ(textsOf(log), (Texts{"m|", "m|"}));
  EXPECT_EQ(log.damagedLines, 3U);
}

TEST(TraceLog, ARecordEndsWithItsFile) {
  const TraceLog log = readFiles({traceOf({"  {  m "}), "lost\n" + traceOf({"  }  m"})});
  EXPECT_EQ(textsOf(log), (Texts{"m|", "m|"}));
  EXPECT_EQ(log.damagedLines, 1U);
}

TEST(TraceLog, AnyBytesMayBeInATextAndItMayBeLong) {
  std::string text("[\0\x01\xff\xc3(\x1b[31m", 10);
  text += std::string(3'000'000, 'x') + "\n" + std::string(1'000'000, '\n') + "]";
  const TraceLog log = readFiles({traceLine("  {  m " + text) + "\n" + traceOf({"  }  m"})});
  EXPECT_EQ(textsOf(log), (Texts{"m|" + text, "m|"}));
}

TEST(TraceLog, TheEventLogIsNotATrace) {
  const TraceLog log = readFiles({"[25/12/2022 14:03:07.000 CET]  0000000000000108 Pipe          I text\n"});
  EXPECT_EQ(log.records, 0U);
  EXPECT_EQ(log.damagedLines, 1U);
}

TEST(TraceLog, FilesAreReadAsTheyAre) {
  const test::TempFolder folder;
  const std::string path = folder.write("trace0.log", bannerOf("9") + traceOf({"  {  m [\x1a]"})).string();
  const TraceLog log = readTrace({{"trace0.log", {path}}});
  EXPECT_EQ(textsOf(log), Texts{"m|[\x1a]"});
  EXPECT_EQ(log.fileNames, Texts{"trace0.log"});
}

TEST(TraceLog, AFileThatCannotBeReadIsAnError) {
  const test::TempFolder folder;
  const std::string missing = (folder.path() / "none").string();
  for (const std::string& path : {missing, folder.path().string()}) {
    try {
      readTrace({{"x", {path}}});
      FAIL() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(std::string(error.what()).rfind("cannot ", 0), 0U) << error.what();
      EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    }
  }
}

}  // namespace tessel::host
