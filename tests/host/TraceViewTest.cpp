// The viewer reads what the library writes.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Trace.h>

#include "host/TraceLines.h"
#include "support/RecordingHandler.h"

namespace tessel::host {
namespace {

using tesselctl::trace::buildTrees;
using tesselctl::trace::TraceLog;
using Lines = std::vector<std::string>;

// A class with trace fully on, whose lines are kept as a file would have them.
struct Traced {
  explicit Traced(const std::string& name) : rd(name), handler(name) { rd.getLogger()->setLevel(LogLevel::ALL); }

  std::string file() const {
    std::string text;
    for (const test::Recorded& record : handler.records()) text += record.line + '\n';
    return text;
  }

  RasDescriptor rd;
  test::RecordingHandler handler;
};

}  // namespace

TEST(TraceView, EveryKindOfRecordIsRead) {
  const Traced traced("view.Kinds");
  const RasDescriptor& rd = traced.rd;
  const NYXException failure("no, sorry");
  Trace::entry(rd, nullptr, "outer", std::string("q1"), std::string());
  Trace::entry(rd, "inner");
  Trace::data(rd, TraceLevel::FLOW, nullptr, "inner", std::string("a\nb"));
  Trace::throwing(rd, "inner", &failure);
  Trace::throwing(rd, "inner", nullptr);
  Trace::exit(rd, "inner");
  Trace::exit(rd, nullptr, "outer", "[5]", "int");
  EXPECT_EQ(treeOf(traced.file()),
            (Lines{"Kinds.outer [q1] [\"\"] returns [[5]] int", "| Kinds.inner", "| | d Kinds.inner [a", "| |     b]",
                   "| | ! Kinds.inner, " + failure.toString() + "[class NYXException]",
                   "| | ! Kinds.inner, Unknown Throwable[Throwable]"}));
}

TEST(TraceView, UnbalancedCallsAreMarked) {
  const Traced traced("view.Unbalanced");
  const RasDescriptor& rd = traced.rd;
  Trace::exit(rd, "before");
  for (const char* method : {"a", "b", "c"}) Trace::entry(rd, method);
  Trace::exit(rd, "unknown");
  Trace::exit(rd, "b");
  Trace::exit(rd, "a");
  EXPECT_EQ(treeOf(traced.file()),
            (Lines{"Unbalanced.before  *** entry missing", "Unbalanced.a", "| Unbalanced.b",
                   "| | Unbalanced.c  *** exit missing", "| | | Unbalanced.unknown  *** entry missing"}));
}

TEST(TraceView, DeepCallsKeepTheirDepth) {
  const Traced traced("view.Deep");
  Lines expected;
  for (int i = 0; i < 25; ++i) {
    Trace::entry(traced.rd, "m");
    std::string line;
    for (int level = 0; level < i; ++level) line += "| ";
    expected.push_back(line + "Deep.m");
  }
  for (int i = 0; i < 25; ++i) Trace::exit(traced.rd, "m");
  EXPECT_EQ(treeOf(traced.file()), expected);
}

TEST(TraceView, ObjectsAndThreadsAreRead) {
  const Traced traced("view.Threads");
  const int object = 0;
  std::thread([&] {
    Trace::entry(traced.rd, &object, "there");
    Trace::exit(traced.rd, &object, "there");
  }).join();
  Trace::entry(traced.rd, "here");
  Trace::exit(traced.rd, "here");
  const TraceLog log = readFiles({traced.file()});
  const auto trees = buildTrees(log);
  ASSERT_EQ(trees.size(), 2U);
  const auto& record = log.processes.at(0).records.at(0);
  EXPECT_EQ(record.object, reinterpret_cast<std::uintptr_t>(&object));
  EXPECT_EQ(record.className, "view.Threads");
  EXPECT_EQ(trees[0].thread, traced.handler.records().front().threadId);
  EXPECT_EQ(trees[1].thread, traced.handler.records().back().threadId);
}

TEST(TraceView, AMethodWithoutANameIsKept) {
  const Traced traced("view.Nameless");
  Trace::entry(traced.rd, nullptr);
  EXPECT_EQ(treeOf(traced.file()), Lines{"? Nameless  {  null "});
}

TEST(TraceView, TheLineOfADebugDescriptorIsNoRecord) {
  EXPECT_EQ(readFiles({"DEBUG: " + traceOf({"  {  m "})}).damagedLines, 1U);
}

}  // namespace tessel::host
