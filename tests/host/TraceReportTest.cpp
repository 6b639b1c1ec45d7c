// The reports on a trace: text, page, trace events.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/TraceLines.h"
#include "support/Json.h"
#include "trace/HtmlReport.h"
#include "trace/PerfettoReport.h"
#include "trace/Report.h"
#include "trace/TracePage.h"

namespace tessel::host {
namespace {

using test::JsonCheck;
using namespace tesselctl::trace;
using Lines = std::vector<std::string>;

std::string plain(const std::string& text) {
  std::string out;
  appendPlain(out, text);
  return out;
}

std::string json(const std::string& text) {
  std::string out;
  appendJson(out, text);
  return out;
}

template <class Report>
std::string reportOf(const std::vector<std::string>& files, Report report) {
  const TraceLog log = readFiles(files);
  std::string text;
  report(log, buildTrees(log), [&](std::string_view part) { text += part; });
  return text;
}

std::string perfettoOf(const std::string& file) {
  std::string events = reportOf({file}, writePerfetto);
  EXPECT_TRUE(JsonCheck::holds(events)) << events;
  return events;
}

// The data inside the page.
std::string pageDataOf(const std::string& file) {
  const std::string html = reportOf({file}, writeHtml);
  const std::string page(tracePage());
  const std::size_t place = page.find("@TRACE_DATA@");
  const std::size_t rest = page.size() - place - std::string("@TRACE_DATA@").size();
  EXPECT_EQ(html.substr(0, place), page.substr(0, place));
  EXPECT_EQ(html.substr(html.size() - rest), page.substr(page.size() - rest));
  std::string data = html.substr(place, html.size() - place - rest);
  EXPECT_TRUE(JsonCheck::holds(data)) << data;
  return data;
}

std::vector<long long> timesOf(const std::string& events) {
  std::vector<long long> times;
  for (std::size_t at = 0; (at = events.find("\"ts\":", at)) != std::string::npos; ++at) {
    times.push_back(std::stoll(events.substr(at + 5)));
  }
  return times;
}

std::string at(const std::string& time, const std::string& message) { return traceLine(message, time) + '\n'; }

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

}  // namespace

TEST(TraceText, CharactersOfUtf8AreKnown) {
  for (const char* text : {"a", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80",
                           "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
    EXPECT_EQ(characterLength(text), std::string(text).size()) << text;
  }
  for (const char* text :
       {"\x80", "\xbf", "\xc0\x80", "\xc1\xbf", "\xc2", "\xc2z", "\xe0\x9f\xbf", "\xe0\xa0", "\xed\xa0\x80",
        "\xed\xbf\xbf", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf0\x90\x80", "\xf8\x88\x80\x80\x80", "\xff", ""}) {
    EXPECT_EQ(characterLength(text), 0U) << plain(text);
  }
}

TEST(TraceText, ATerminalGetsNoControlCharacters) {
  EXPECT_EQ(plain("a\"b\\c<d>\xc3\xa9\te"), "a\"b\\c<d>\xc3\xa9\te");
  EXPECT_EQ(plain("\x1b[31m\r\x7f\xc2\x9b\xc2\xa0\xff"), "\\x1b[31m\\x0d\\x7f\\xc2\\x9b\xc2\xa0\\xff");
  EXPECT_EQ(plain(std::string("a\0b", 3)), "a\\x00b");
}

TEST(TraceText, JsonIsEscaped) {
  EXPECT_EQ(json("a\"b\\c\xc3\xa9>&'"), "a\\\"b\\\\c\xc3\xa9>&'");
  EXPECT_EQ(json("</script><!--"), "\\u003c/script>\\u003c!--");
  EXPECT_EQ(json("\x1b\t\x7f"), "\\u001b\\u0009\\u007f");
  EXPECT_EQ(json("a\r\nb\nc\rd\r"), "a\\nb\\nc\\u000dd\\u000d");
  EXPECT_EQ(json("\xff\xc3(\xed\xa0\x80"), "\\\\xff\\\\xc3(\\\\xed\\\\xa0\\\\x80");
  EXPECT_EQ(json(std::string("\0", 1)), "\\u0000");
}

TEST(TraceText, NumbersAreShownShort) {
  EXPECT_EQ(threadText(0x108), "0000000000000108");
  EXPECT_EQ(objectText(0), "");
  EXPECT_EQ(objectText(0x64f0b0), "64f0b0");
  EXPECT_EQ(objectText(0xfedcba9876543210), "fedcba9876543210");
}

TEST(TraceText, ABufferHandsOnLargePieces) {
  std::vector<std::size_t> sizes;
  ReportBuffer buffer([&](std::string_view part) { sizes.push_back(part.size()); });
  for (int i = 0; i < 100000; ++i) {
    buffer.text() += 'x';
    buffer.piece();
  }
  buffer.finish();
  buffer.finish();
  EXPECT_EQ(sizes, (std::vector<std::size_t>{65536, 34464}));
}

TEST(TextReport, LinesBeginWithTheirTimes) {
  EXPECT_EQ(reportOf({at("14:03:07.000.01", "-  {  b ") + at("14:03:08.000.00", "-  }  b")}, writeText),
            "thread 0000000000000108, a process of trace%g.log\n"
            "                   *** entry missing  *** open at the end\n"
            "14:03:07.000.01  | Pipe.b\n");
}

TEST(TextReport, TheTimeOfAnExitIsThatOfACallWithoutContentOnly) {
  EXPECT_EQ(reportOf({at("14:03:07.000.01", "-  }  b") + at("14:03:08.000.00", "  }  a")}, writeText),
            "thread 0000000000000108, a process of trace%g.log\n"
            "                 Pipe.a  *** entry missing\n"
            "14:03:07.000.01  | Pipe.b  *** entry missing\n");
}

TEST(TextReport, ObjectsAreShown) {
  const std::string line = traceLine("  {  m ", "14:03:07.000.00", "0000000000000108", "a.b.C", "@00000000000000ff");
  EXPECT_EQ(treeOf(line), Lines{"C@ff.m  *** open at the end"});
}

TEST(TextReport, FurtherLinesOfATextStandBelow) {
  EXPECT_EQ(treeOf(traceOf({"  {  a ", "-  d  a data [x\r\ny\n\nz]", "  }  a"})),
            (Lines{"Pipe.a", "| d Pipe.a [x", "|     y", "|     ", "|     z]"}));
}

TEST(TextReport, AnyByteIsShown) {
  EXPECT_EQ(treeOf(traceOf({"  d  m data [\x1b[0m \xff]"})), Lines{"d Pipe.m [\\x1b[0m \\xff]"});
}

TEST(TextReport, TheSummaryCounts) {
  const TraceLog log = readFiles(
      {bannerOf("7") + traceOf({"  {  a ", "-  {  b ", "--  {  c ", "  }  a", "-  d  m data "}), "damaged\n"});
  EXPECT_EQ(summaryText(log, buildTrees(log)),
            "files: 2, records: 5, banner lines: 10, damaged lines: 1\n"
            "threads: 1, missing entries: 1, missing exits: 2, open at the end: 1");
}

TEST(TextReport, NothingIsWrittenWithoutARecord) { EXPECT_EQ(reportOf({"x\n"}, writeText), ""); }

TEST(PerfettoReport, CallsBeginAndEnd) {
  EXPECT_EQ(perfettoOf(bannerOf("7") + at("00:00:01.000.00", "  {  a [1]") + at("00:00:01.000.01", "-  d  a data [<]") +
                       at("00:00:02.001.00", "  }  a returns [2] int")),
            "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n"
            "{\"ph\":\"M\",\"name\":\"process_name\",\"pid\":1,\"args\":{\"name\":\"process 7 of trace%g.log\"}},\n"
            "{\"ph\":\"M\",\"name\":\"thread_name\",\"pid\":1,\"tid\":264,"
            "\"args\":{\"name\":\"thread 0000000000000108\"}},\n"
            "{\"ph\":\"B\",\"ts\":1000000,\"pid\":1,\"tid\":264,\"cat\":\"call\",\"name\":\"Pipe.a\","
            "\"args\":{\"class\":\"ktb.Pipe\",\"time\":\"00:00:01.000.00\",\"arguments\":\"[1]\"}},\n"
            "{\"ph\":\"i\",\"ts\":1000001,\"pid\":1,\"tid\":264,\"cat\":\"data\",\"name\":\"Pipe.a\",\"s\":\"t\","
            "\"args\":{\"class\":\"ktb.Pipe\",\"time\":\"00:00:01.000.01\",\"text\":\"[\\u003c]\"}},\n"
            "{\"ph\":\"E\",\"ts\":2000256,\"pid\":1,\"tid\":264,\"args\":{\"exit\":\"returns [2] int\"}}\n"
            "]}\n");
}

TEST(PerfettoReport, TimesOfAThreadIncreaseStrictly) {
  const std::string file = at("00:00:05.000.00", "  {  a ") + at("00:00:05.000.00", "-  {  b ") +
                           at("00:00:04.000.00", "--  {  c ") + at("00:00:05.000.00", "  }  a") +
                           at("00:00:05.16777215.FF", "  {  d ") + at("00:00:06.000.00", "  {  e ");
  EXPECT_EQ(timesOf(perfettoOf(file)), (std::vector<long long>{5000000, 5000001, 5000002, 5000003, 5000004, 5000005,
                                                               5999999, 6000000, 6000001, 6000002}));
}

TEST(PerfettoReport, CallsInFrontOfTheFirstRecordBeginBeforeIt) {
  EXPECT_EQ(timesOf(perfettoOf(at("00:00:05.000.00", "--  d  m data "))),
            (std::vector<long long>{4999998, 4999999, 5000000, 5000001, 5000002}));
  EXPECT_EQ(timesOf(perfettoOf(at("00:00:00.000.00", "-  d  m data "))), (std::vector<long long>{0, 1, 2}));
}

TEST(PerfettoReport, AnExitWithoutEntryHasItsTime) {
  EXPECT_EQ(timesOf(perfettoOf(at("00:00:05.000.00", "  d  m data ") + at("00:00:06.000.00", "  }  m"))),
            (std::vector<long long>{5000000, 5000001, 6000000}));
}

TEST(PerfettoReport, ANewDayGoesOnAndAClockMayBeSetBack) {
  EXPECT_EQ(timesOf(perfettoOf(at("23:59:59.000.00", "  d  m data ") + at("00:00:01.000.00", "  d  m data ") +
                               at("23:59:58.000.00", "  d  m data ") + at("00:00:02.000.00", "  d  m data "))),
            (std::vector<long long>{86399000000, 86401000000, 86401000001, 86402000000}));
}

TEST(PerfettoReport, WhatIsMissingIsSaid) {
  const std::string events = perfettoOf(traceOf({"-  {  b ", "--  {  c ", "-  }  b", "-  {  d "}));
  EXPECT_TRUE(contains(events, R"("name":"entry missing","args":{"entry":"missing","exit":"open at the end"}})"));
  EXPECT_TRUE(
      contains(events, R"("name":"Pipe.c","args":{"class":"ktb.Pipe","time":"14:03:07.000.00","exit":"missing"}})"));
}

TEST(PerfettoReport, ItIsWholeWithoutARecord) {
  EXPECT_EQ(perfettoOf(""), "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n]}\n");
}

TEST(HtmlReport, ThePageHoldsTheNodes) {
  const std::string line =
      traceLine("-  d  m data [\"x\"]", "14:03:07.000.01", "0000000000000108", "a.B", "@00000000000000ff");
  EXPECT_EQ(pageDataOf(bannerOf("7") + traceOf({"  {  m [1]"}) + line + "\n" +
                       traceOf({"  }  m returns [2] int", "--  !  x, no[E]"})),
            "{\"summary\":\"files: 1, records: 4, banner lines: 10, damaged lines: 0\\n"
            "threads: 1, missing entries: 2, missing exits: 0, open at the end: 2\","
            "\"files\":[\"trace0.log\"],\"threads\":[\n"
            "{\"name\":\"0000000000000108\",\"process\":\"process 7 of trace%g.log\",\"nodes\":[\n"
            "[0,0,0,0,0,\"\",\"14:03:07.000.00\",\"14:03:07.000.00\",\"[1]\",\"returns [2] int\",0,11,1],\n"
            "[1,1,0,1,0,\"ff\",\"14:03:07.000.01\",\"\",\"[\\\"x\\\"]\",\"\",0,12,1],\n"
            "[0,0,5,-1,-1,\"\",\"\",\"\",\"\",\"\",0,0,1],\n"
            "[1,0,5,-1,-1,\"\",\"\",\"\",\"\",\"\",0,0,1],\n"
            "[2,2,0,0,1,\"\",\"14:03:07.000.00\",\"\",\"no[E]\",\"\",0,14,1]]}],"
            "\"classes\":[\"ktb.Pipe\",\"a.B\"],\"methods\":[\"m\",\"x\"]}");
}

TEST(HtmlReport, NoTextOfTheTraceEndsTheData) {
  const std::string data = pageDataOf(traceOf({"  d  m data [</script><script>alert(1)</script>\xff<!--]"}));
  EXPECT_FALSE(contains(data, "<"));
}

TEST(HtmlReport, ThePageIsWholeWithoutARecord) {
  EXPECT_TRUE(contains(pageDataOf(""), "\"threads\":[],\"classes\":[],\"methods\":[]}"));
}

TEST(HtmlReport, ThePageLoadsNothing) {
  const std::string page(tracePage());
  EXPECT_TRUE(contains(page, "content=\"default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'\""));
  for (const char* part :
       {"http:", "https:", " src=", " href=", "@import", "url(", "fetch(", "XMLHttpRequest", "import("}) {
    EXPECT_FALSE(contains(page, part)) << part;
  }
  for (const char* part : {"@TRACE_STYLE@", "@TRACE_SCRIPT@"}) EXPECT_FALSE(contains(page, part)) << part;
}

}  // namespace tessel::host
