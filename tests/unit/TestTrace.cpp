#include <gtest/gtest.h>

#include <future>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <tessel/IPCTimeoutException.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThread.h>
#include <tessel/RasDescriptor.h>
#include <tessel/ResourceBundle.h>
#include <tessel/Trace.h>

#include "support/CapturedOutput.h"
#include "support/Captures.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"
#include "support/TraceTest.h"

namespace tessel {

namespace {

using test::CapturedOutput;
using test::Recorded;
using Texts = std::vector<std::string>;

// A class with trace fully on, and what it traces.
struct Traced {
  explicit Traced(const std::string& className) : rd(className), handler(className) {
    rd.getLogger()->setLevel(LogLevel::ALL);
  }

  void enter(const char* method) const { Trace::entry(rd, method); }
  void leave(const char* method) const { Trace::exit(rd, method); }

  RasDescriptor rd;
  test::RecordingHandler handler;
};

TEST(Trace, EntryAndExitBalance) {
  const Traced traced("trace.Balance");
  Trace::entry(traced.rd, nullptr, "connect", std::string("q1"));
  EXPECT_TRUE(TraceTest::hasStack());
  traced.leave("connect");
  EXPECT_EQ((Texts{"  {  connect [q1]", "  }  connect"}), traced.handler.messages());
  EXPECT_FALSE(TraceTest::hasStack());
}

TEST(Trace, ExitOfAnOuterMethodNamesTheMissingExit) {
  const Traced traced("trace.MissingExit");
  for (const char* method : {"a", "b", "c"}) traced.enter(method);
  traced.leave("a");
  EXPECT_EQ("*** Missing Trace::Exit c ***   }  a", traced.handler.messages().back());
  EXPECT_FALSE(TraceTest::hasStack());
}

TEST(Trace, ExitOfAMiddleMethodClosesOnlyTheOnesAbove) {
  const Traced traced("trace.MiddleExit");
  for (const char* method : {"a", "b", "c"}) traced.enter(method);
  traced.leave("b");
  traced.leave("a");
  EXPECT_EQ((Texts{"  {  a ", "-  {  b ", "--  {  c ", "*** Missing Trace::Exit c *** -  }  b", "  }  a"}),
            traced.handler.messages());
}

TEST(Trace, ExitWithoutEntryLeavesTheStackAsItWas) {
  const Traced traced("trace.MissingEntry");
  traced.enter("a");
  traced.enter("b");
  traced.leave("x");
  traced.leave("b");
  traced.leave("a");
  EXPECT_EQ((Texts{"  {  a ", "-  {  b ", "*** Missing Trace::Entry x *** --  }  x", "-  }  b", "  }  a"}),
            traced.handler.messages());
}

TEST(Trace, ExitOnAnEmptyStackNamesTheMissingEntry) {
  const Traced traced("trace.EmptyStack");
  traced.leave("x");
  EXPECT_EQ(Texts{"*** Missing Trace::Entry x ***   }  x"}, traced.handler.messages());
  EXPECT_FALSE(TraceTest::hasStack());
}

TEST(Trace, IndentationShowsTheDepth) {
  const Traced traced("trace.Depth");
  for (int depth = 1; depth <= 11; ++depth) traced.enter("m");
  for (int depth = 11; depth >= 1; --depth) traced.leave("m");
  const Texts messages = traced.handler.messages();
  ASSERT_EQ(22U, messages.size());
  EXPECT_EQ("  {  m ", messages[0]);
  EXPECT_EQ("--  {  m ", messages[2]);
  EXPECT_EQ("----  {  m ", messages[4]);
  EXPECT_EQ("----+  {  m ", messages[5]);
  EXPECT_EQ("----+----+  {  m ", messages[10]);
  EXPECT_EQ("----+----+  }  m", messages[11]);
  EXPECT_EQ("----+  }  m", messages[16]);
  EXPECT_EQ("  }  m", messages[21]);
}

TEST(Trace, DataIsIndentedOneDeeper) {
  const Traced traced("trace.Data");
  Trace::data(traced.rd, TraceLevel::FLOW, nullptr, "m", std::string("x"), std::string("y"));
  traced.enter("m");
  Trace::data(traced.rd, TraceLevel::FLOW, "m");
  traced.leave("m");
  EXPECT_EQ((Texts{"  d  m data [x] [y]", "  {  m ", "-  d  m data ", "  }  m"}), traced.handler.messages());
}

TEST(Trace, ThrowingIsIndentedOneDeeper) {
  const Traced traced("trace.Throwing");
  const IPCTimeoutException late("late");
  Trace::throwing(traced.rd, "m", nullptr);
  traced.enter("m");
  Trace::throwing(traced.rd, "m", &late);
  traced.leave("m");
  EXPECT_EQ((Texts{"  !  m, Unknown Throwable[Throwable]", "  {  m ",
                   "-  !  m, class IPCTimeoutException: late[class IPCTimeoutException]", "  }  m"}),
            traced.handler.messages());
}

TEST(Trace, NullAndEmptyArgumentsShowAsTwoQuotes) {
  const Traced traced("trace.Empty");
  Trace::entry(traced.rd, nullptr, "m", std::string(), std::string("b"));
  TraceTest::entryWithNullArgument(traced.rd, "n", "b");
  Trace::data(traced.rd, TraceLevel::FLOW, nullptr, "n", std::string());
  traced.leave("n");
  traced.leave("m");
  const Texts messages = traced.handler.messages();
  EXPECT_EQ("  {  m [\"\"] [b]", messages.at(0));
  EXPECT_EQ("-  {  n [\"\"] [b]", messages.at(1));
  EXPECT_EQ("--  d  n data [\"\"]", messages.at(2));
}

TEST(Trace, ShowsAtMostFiveArguments) {
  const Traced traced("trace.Many");
  const std::string a("a");
  Trace::entry(traced.rd, nullptr, "m", a, a, a, a, std::string("5"), std::string("6"), std::string("7"));
  Trace::data(traced.rd, TraceLevel::FLOW, nullptr, "m", a, a, a, a, std::string("5"), std::string("6"));
  traced.leave("m");
  EXPECT_EQ("  {  m [a] [a] [a] [a] [5]", traced.handler.messages().at(0));
  EXPECT_EQ("-  d  m data [a] [a] [a] [a] [5]", traced.handler.messages().at(1));
}

TEST(Trace, NullMethodIsShownAsNullAndNotStacked) {
  const Traced traced("trace.Null");
  Trace::entry(traced.rd, nullptr);
  EXPECT_TRUE(TraceTest::hasStack());
  Trace::data(traced.rd, TraceLevel::FLOW, nullptr);
  Trace::throwing(traced.rd, nullptr, nullptr);
  Trace::exit(traced.rd, nullptr);
  EXPECT_EQ((Texts{" {  null ", "  d  null data ", "  !  null, Unknown Throwable[Throwable]", " }  null"}),
            traced.handler.messages());
  EXPECT_EQ("null", traced.handler.records().front().methodName);
  traced.enter("m");
  traced.leave("m");
}

TEST(Trace, UndottedClassNameStandsBehindPrefixAndDot) {
  const Traced traced("TraceUndotted");
  traced.enter("m");
  traced.leave("m");
  EXPECT_EQ(".TraceUndotted", traced.handler.records().at(0).className);
}

TEST(Trace, DottedClassNameStandsAlone) {
  const Traced traced("trace.Dotted");
  traced.enter("m");
  traced.leave("m");
  EXPECT_EQ("trace.Dotted", traced.handler.records().at(0).className);
}

TEST(Trace, RecordsHaveTheirTypesAndLevels) {
  const Traced traced("trace.Levels");
  traced.enter("m");
  for (const auto level : {TraceLevel::FLOW, TraceLevel::MODERATE, TraceLevel::VERBOSE, TraceLevel::OFF}) {
    Trace::data(traced.rd, level, "m");
  }
  Trace::throwing(traced.rd, "m", nullptr);
  traced.leave("m");
  std::vector<std::pair<int, int>> shown;
  for (const Recorded& record : traced.handler.records()) {
    shown.emplace_back(record.type.getValue(), record.level.getValue());
  }
  EXPECT_EQ((std::vector<std::pair<int, int>>{{1, 30}, {3, 30}, {3, 20}, {3, 10}, {3, 30}, {4, 30}, {2, 30}}), shown);
}

TEST(Trace, RecordsCarryObjectAndThread) {
  const Traced traced("trace.Object");
  const int object = 0;
  Trace::entry(traced.rd, &object, "m");
  Trace::data(traced.rd, TraceLevel::FLOW, &object, "m");
  Trace::throwing(traced.rd, &object, "m", nullptr);
  Trace::exit(traced.rd, &object, "m");
  traced.enter("n");
  traced.leave("n");
  const std::vector<Recorded> records = traced.handler.records();
  ASSERT_EQ(6U, records.size());
  for (std::size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(i < 4 ? &object : nullptr, records[i].object);
    EXPECT_EQ(NYXThread::getCurrentThreadId(), records[i].threadId);
  }
}

TEST(Trace, ExitShowsTheReturnedValueAndItsType) {
  const Traced traced("trace.Return");
  traced.enter("m");
  Trace::exit(traced.rd, nullptr, "m", "7", "int");
  traced.enter("m");
  Trace::exit(traced.rd, nullptr, "m", "", "string");
  EXPECT_EQ("  }  m returns [7] int", traced.handler.messages().at(1));
  EXPECT_EQ("  }  m returns [] string", traced.handler.messages().at(3));
}

TEST(Trace, PointRaisedWhilePublishingAnotherIsDropped) {
  class Tracing : public LogHandler {
   public:
    explicit Tracing(const RasDescriptor& rd) : LogHandler(LogLevel::ALL), rd_(rd) {}
    void publish(LogRecord& /*record*/) override {
      Trace::entry(rd_, "inner");
      Trace::data(rd_, TraceLevel::FLOW, "inner");
      Trace::throwing(rd_, "inner", nullptr);
      Trace::exit(rd_, "inner");
    }

   private:
    const RasDescriptor& rd_;
  };
  const Traced traced("trace.Reentrant");
  Tracing tracing(traced.rd);
  traced.rd.getLogger()->addHandler(tracing);
  traced.enter("outer");
  traced.leave("outer");
  traced.rd.getLogger()->removeHandler(tracing);
  EXPECT_EQ((Texts{"  {  outer ", "  }  outer"}), traced.handler.messages());
}

TEST(Trace, ExceptionOutOfAHandlerLeavesTraceUsable) {
  class Throwing : public LogHandler {
   public:
    Throwing() : LogHandler(LogLevel::ALL) {}
    void publish(LogRecord& /*record*/) override { throw 42; }
  };
  const Traced traced("trace.Broken");
  Throwing throwing;
  traced.rd.getLogger()->addHandler(throwing);
  EXPECT_NO_THROW(traced.enter("m"));
  EXPECT_NO_THROW(traced.leave("m"));
  traced.rd.getLogger()->removeHandler(throwing);
  EXPECT_EQ((Texts{"  {  m ", "  }  m"}), traced.handler.messages());
}

TEST(Trace, EveryThreadHasItsOwnDepth) {
  const Traced traced("trace.Threads");
  traced.enter("a");
  traced.enter("b");
  std::thread([&traced] {
    traced.enter("other");
    traced.leave("other");
    EXPECT_FALSE(TraceTest::hasStack());
  }).join();
  traced.leave("b");
  traced.leave("a");
  EXPECT_EQ((Texts{"  {  a ", "-  {  b ", "  {  other ", "  }  other", "-  }  b", "  }  a"}),
            traced.handler.messages());
}

TEST(Trace, ThreadsThatTraceAtOnceStayBalanced) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 100;
  const Traced traced("trace.Busy");
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&traced] {
      for (int round = 0; round < kRounds; ++round) {
        traced.enter("a");
        traced.enter("b");
        traced.leave("b");
        traced.leave("a");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::map<std::string, int> counts;
  for (const std::string& message : traced.handler.messages()) ++counts[message];
  constexpr int kAll = kThreads * kRounds;
  EXPECT_EQ((std::map<std::string, int>{{"  {  a ", kAll}, {"-  {  b ", kAll}, {"-  }  b", kAll}, {"  }  a", kAll}}),
            counts);
}

// Otherwise a handler that waits for that lock and the thread that holds it could wait for each other.
TEST(Trace, PointInsideAHandlerIsDroppedWhileAnotherThreadTraces) {
  class Blocking : public LogHandler {
   public:
    Blocking() : LogHandler(LogLevel::ALL) {}
    void publish(LogRecord& /*record*/) override {
      entered.set_value();
      release.get_future().wait();
    }

    std::promise<void> entered;
    std::promise<void> release;
  };
  class Tracing : public LogHandler {
   public:
    explicit Tracing(const RasDescriptor& rd) : LogHandler(LogLevel::ALL), rd_(rd) {}
    void publish(LogRecord& /*record*/) override { Trace::data(rd_, TraceLevel::FLOW, "publish"); }

   private:
    const RasDescriptor& rd_;
  };
  const RasDescriptor blockedRd("trace.Blocked");
  blockedRd.getLogger()->setLevel(LogLevel::ALL);
  Blocking blocking;
  blockedRd.getLogger()->addHandler(blocking);
  std::thread tracer([&blockedRd] { Trace::data(blockedRd, TraceLevel::FLOW, "m"); });
  blocking.entered.get_future().wait();

  const Traced traced("trace.Inside");
  Tracing tracing(traced.rd);
  Logger* events = Logger::getLogger("trace.Events");
  events->addHandler(tracing);
  LogRecord event(LogLevel::INFO, LogRecordType::EVENT, "m");
  events->log(event);
  EXPECT_EQ(Texts{}, traced.handler.messages());

  blocking.release.set_value();
  tracer.join();
  blockedRd.getLogger()->removeHandler(blocking);
  events->log(event);
  events->removeHandler(tracing);
  EXPECT_EQ(Texts{"  d  publish data "}, traced.handler.messages());
}

TEST(Trace, DebugDescriptorPrintsToStandardOutput) {
  CapturedOutput output(CapturedOutput::output);
  const RasDescriptor rd("DebugClass", nullptr);
  Trace::entry(rd, nullptr, "connect", std::string("q1"));
  Trace::exit(rd, "connect");
  const Texts lines = test::linesOf(output.text());
  ASSERT_EQ(2U, lines.size());
  EXPECT_EQ("DEBUG: ", lines[0].substr(0, 7));
  EXPECT_EQ("           static .DebugClass", lines[0].substr(7 + 34, 29));
  EXPECT_EQ("  {  connect [q1]", lines[0].substr(7 + 123));
  EXPECT_EQ("  }  connect", lines[1].substr(7 + 123));
}

TEST(Trace, MethodsOfTheLibraryTraceEntryAndExit) {
  const test::RecordingHandler root("");
  ResourceBundle bundle("trace.MethodGuard");
  const test::TraceScope trace("=ALL");
  const std::size_t before = root.records().size();
  EXPECT_EQ("key", bundle.getString("key"));
  const std::vector<Recorded> records = root.records();
  ASSERT_EQ(before + 2, records.size());
  EXPECT_EQ("  {  getString [key]", records[before].message);
  EXPECT_EQ("  }  getString returns [key] string", records[before + 1].message);
  EXPECT_EQ(".ResourceBundle", records[before].className);
  EXPECT_EQ(&bundle, records[before].object);
}

TEST(Trace, SwitchingInTheMiddleOfAMethodFakesNoMissingPoint) {
  const test::RecordingHandler root("");
  {
    const test::TraceScope trace("=ALL");
    EXPECT_EQ(0U, TraceTest::openMethods());
  }
  EXPECT_EQ(0U, TraceTest::openMethods());
  for (const std::string& message : root.messages()) {
    EXPECT_EQ(std::string::npos, message.find("Missing Trace")) << message;
    EXPECT_EQ(std::string::npos, message.find("}  setLevel")) << message;
  }
}

TEST(Trace, CopyAndAssignmentAreCaptured) {
  const test::Captures captures;
  TraceTest::copyTrace();
  TraceTest::assignTrace();
  EXPECT_EQ((Texts{"class NYXException: Trace copy constructor should never be called!",
                   "class NYXException: Trace assignment operator should never be called!"}),
            captures.values("Cause:"));
  EXPECT_EQ((Texts{"Trace", "Trace"}), captures.values("Class:"));
  EXPECT_EQ((Texts{"Trace", "operator="}), captures.values("Method:"));
  EXPECT_EQ((Texts{"FFDC_001", "FFDC_002"}), captures.values("Probe:"));
}

}  // namespace
}  // namespace tessel
