// Nesting of the records of each thread.
#include "trace/CallTree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/TraceLines.h"

namespace tessel::host {
namespace {

using tesselctl::trace::buildTrees;
using tesselctl::trace::MissingCalls;
using tesselctl::trace::missingCalls;
using tesselctl::trace::ThreadTree;
using tesselctl::trace::TraceLog;
using Lines = std::vector<std::string>;

void expectMissing(const std::string& file, std::uint64_t entries, std::uint64_t exits, std::uint64_t open) {
  const TraceLog log = readFiles({file});
  const MissingCalls missing = missingCalls(buildTrees(log).at(0));
  EXPECT_EQ(missing.entries, entries);
  EXPECT_EQ(missing.exits, exits);
  EXPECT_EQ(missing.open, open);
}

std::string ofThread(const std::string& thread, const std::string& message) {
  return traceLine(message, "14:03:07.000.00", thread) + '\n';
}

std::string ofClass(const std::string& className, const std::string& message) {
  return traceLine(message, "14:03:07.000.00", "0000000000000108", className) + '\n';
}

std::string filtered(const std::string& file, const std::string& className) {
  const TraceLog log = readFiles({file});
  std::vector<ThreadTree> trees = buildTrees(log);
  keepClass(trees.at(0), log.processes.at(0), className);
  return textOf(log, trees);
}

}  // namespace

TEST(CallTree, CallsHoldWhatHappensInsideThem) {
  EXPECT_EQ(treeOf(traceOf({"  {  a [1]", "-  {  b ", "--  d  b data [x]", "-  }  b returns [2] int", "-  !  a, no[E]",
                            "  }  a", "  {  c ", "  }  c"})),
            (Lines{"Pipe.a [1]", "| Pipe.b returns [2] int", "| | d Pipe.b [x]", "| ! Pipe.a, no[E]", "Pipe.c"}));
}

TEST(CallTree, PointsMayStandOutsideOfEveryCall) {
  EXPECT_EQ(treeOf(traceOf({"  d  m data [x]", "  !  m, no[E]"})), (Lines{"d Pipe.m [x]", "! Pipe.m, no[E]"}));
  expectMissing(traceOf({"  d  m data [x]"}), 0, 0, 0);
}

TEST(CallTree, AMessageOfAnotherKindStandsWhereTheThreadIs) {
  EXPECT_EQ(treeOf(traceOf({"  {  a ", "text", "  }  a", "text"})), (Lines{"Pipe.a", "| ? Pipe text", "? Pipe text"}));
}

TEST(CallTree, AMissingExitIsMarked) {
  const std::string file =
      traceOf({"  {  a ", "-  {  b ", "--  {  c ", "*** Missing Trace::Exit c ***   }  a", "  {  d ", "  }  d"});
  EXPECT_EQ(treeOf(file), (Lines{"Pipe.a", "| Pipe.b  *** exit missing", "| | Pipe.c  *** exit missing", "Pipe.d"}));
  expectMissing(file, 0, 2, 0);
}

TEST(CallTree, AnEntryAtTheSameDepthEndsTheCallBefore) {
  EXPECT_EQ(treeOf(traceOf({"  {  a ", "  {  b ", "  }  b"})), (Lines{"Pipe.a  *** exit missing", "Pipe.b"}));
}

TEST(CallTree, APointFurtherOutEndsTheCallsInside) {
  EXPECT_EQ(treeOf(traceOf({"  {  a ", "-  {  b ", "-  d  a data ", "  }  a"})),
            (Lines{"Pipe.a", "| Pipe.b  *** exit missing", "| d Pipe.a"}));
}

TEST(CallTree, AMissingEntryIsMarked) {
  const std::string file = traceOf({"  {  a ", "*** Missing Trace::Entry b *** -  }  b returns [1] int", "  }  a"});
  EXPECT_EQ(treeOf(file), (Lines{"Pipe.a", "| Pipe.b returns [1] int  *** entry missing"}));
  expectMissing(file, 1, 0, 0);
}

TEST(CallTree, AMissingEntryOutsideOfEveryCallIsMarked) {
  EXPECT_EQ(treeOf(traceOf({"*** Missing Trace::Entry b ***   }  b"})), (Lines{"Pipe.b  *** entry missing"}));
}

TEST(CallTree, AnExitOfAnotherMethodEndsNoCall) {
  const std::string file = traceOf({"  {  a ", "  }  b"});
  EXPECT_EQ(treeOf(file), (Lines{"Pipe.a  *** exit missing", "Pipe.b  *** entry missing"}));
  expectMissing(file, 1, 1, 0);
}

TEST(CallTree, CallsEnteredBeforeTheFileBeginsAreNamedByTheirExits) {
  const std::string file = traceOf({"--  {  c ", "--  }  c", "-  }  b returns [1] int", "  }  a", "  {  d ", "  }  d"});
  EXPECT_EQ(treeOf(file), (Lines{"Pipe.a  *** entry missing", "| Pipe.b returns [1] int  *** entry missing",
                                 "| | Pipe.c", "Pipe.d"}));
  expectMissing(file, 2, 0, 0);
}

TEST(CallTree, ALostPartIsShownByTheDepthOfWhatFollows) {
  const std::string file = traceOf({"  {  a ", "---  d  d data [1]", "  }  a"});
  EXPECT_EQ(treeOf(file), (Lines{"Pipe.a", "|   *** entry missing  *** exit missing",
                                 "| |   *** entry missing  *** exit missing", "| | | d Pipe.d [1]"}));
  expectMissing(file, 2, 2, 0);
}

TEST(CallTree, ManyMissingCallsComeTogether) {
  std::string indentation;
  for (int i = 1; i < 100; ++i) indentation += i % 5 == 0 ? '+' : '-';
  const std::string file = traceOf({indentation + "  {  m ", indentation + "  }  m", "----+----  }  k"});
  const Lines lines = treeOf(file);
  ASSERT_EQ(lines.size(), 34U);
  EXPECT_EQ(lines[0], "  *** 9 entries missing  *** open at the end");
  EXPECT_EQ(lines[1], "|   *** entry missing  *** exit missing");
  EXPECT_EQ(lines[33], "| Pipe.k  *** entry missing");
}

TEST(CallTree, CallsThatAreOpenAtTheEndAreMarked) {
  const std::string file = traceOf({"  {  a ", "-  {  b "});
  EXPECT_EQ(treeOf(file), (Lines{"Pipe.a  *** open at the end", "| Pipe.b  *** open at the end"}));
  expectMissing(file, 0, 0, 2);
}

TEST(CallTree, ThreadsAreTakenApartInTheOrderOfTheirFirstRecords) {
  const TraceLog log = readFiles({ofThread("0000000000000200", "  {  a ") + ofThread("0000000000000108", "  {  b ") +
                                  ofThread("0000000000000200", "  }  a") + ofThread("0000000000000108", "  }  b")});
  EXPECT_EQ(printedLines(textOf(log, buildTrees(log))),
            (Lines{"thread 0000000000000200, a process of trace%g.log", "Pipe.a", "",
                   "thread 0000000000000108, a process of trace%g.log", "Pipe.b"}));
}

TEST(CallTree, ACallGoesOnInTheNextGeneration) {
  const TraceLog log = readFiles({traceOf({"  {  a "}), traceOf({"-  d  a data "}), traceOf({"  }  a"})});
  EXPECT_EQ(printedLines(textOf(log, buildTrees(log))),
            (Lines{"thread 0000000000000108, a process of trace%g.log", "Pipe.a", "| d Pipe.a"}));
}

TEST(CallTree, ANewProcessBeginsNewTrees) {
  const TraceLog log =
      readFiles({bannerOf("7") + traceOf({"  {  a "}) + bannerOf("8") + traceOf({"  {  b ", "  }  b"})});
  EXPECT_EQ(printedLines(textOf(log, buildTrees(log))),
            (Lines{"thread 0000000000000108, process 7 of trace%g.log", "Pipe.a  *** open at the end", "",
                   "thread 0000000000000108, process 8 of trace%g.log", "Pipe.b"}));
}

TEST(CallTree, AClassIsKeptWithTheCallsAroundIt) {
  const std::string file = ofClass("ktb.A", "  {  a ") + ofClass("ktb.B", "-  {  b ") + ofClass("ktb.C", "--  {  c ") +
                           ofClass("ktb.C", "--  }  c") + ofClass("ktb.B", "-  }  b") + ofClass("ktb.A", "-  {  x ") +
                           ofClass("ktb.A", "-  }  x") + ofClass("ktb.A", "  }  a") + ofClass("ktb.XB", "  d  m data ");
  EXPECT_EQ(printedLines(filtered(file, "B")),
            (Lines{"thread 0000000000000108, a process of trace%g.log", "A.a", "| B.b"}));
  EXPECT_EQ(filtered(file, "B"), filtered(file, "ktb.B"));
  EXPECT_EQ(printedLines(filtered(file, "tb.B")), Lines{"thread 0000000000000108, a process of trace%g.log"});
  EXPECT_EQ(printedLines(filtered(file, "C")),
            (Lines{"thread 0000000000000108, a process of trace%g.log", "A.a", "| B.b", "| | C.c"}));
}

TEST(CallTree, WhatAClassContainsIsLeftOutUnlessItIsOfTheClass) {
  const std::string file = ofClass("A", "  {  a ") + ofClass("B", "-  {  b ") + ofClass("A", "--  d  b data ") +
                           ofClass("B", "-  }  b") + ofClass("A", "  }  a");
  EXPECT_EQ(printedLines(filtered(file, "A")),
            (Lines{"thread 0000000000000108, a process of trace%g.log", "A.a", "| B.b", "| | d A.b"}));
}

TEST(CallTree, NodesKnowWhereTheyEnd) {
  const TraceLog log = readFiles({traceOf({"  {  a ", "-  {  b ", "-  }  b", "-  d  a data ", "  }  a", "  {  c "})});
  std::vector<std::uint32_t> ends;
  const std::vector<ThreadTree> trees = buildTrees(log);
  for (const auto& node : trees.at(0).nodes) ends.push_back(node.end);
  EXPECT_EQ(ends, (std::vector<std::uint32_t>{3, 2, 3, 4}));
}

}  // namespace tessel::host
