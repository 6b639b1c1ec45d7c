#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include <tessel/LogRecord.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXUtils.h>

#include "support/LogFolder.h"
#include "support/RecordingHandler.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel {

struct UniqueNumberTest {
  static long choose(SecureFileHandler& handler, const std::string& pattern, long end) {
    return handler.chooseUnique(pattern, 0, end);
  }
};

namespace {

using test::HandlerOptions;
using test::LogFolder;
using test::messageText;
using test::thrownBy;

using Names = std::vector<std::string>;

constexpr int kNoLimit = 1000000;

class SecureFileHandlerTest : public testing::Test {
 protected:
  const LogFolder folder;
};

TEST_F(SecureFileHandlerTest, WritesEachTextAsALineOfItsOwn) {
  const auto handler = folder.open();
  handler->publish("first");
  handler->publish("");
  handler->publish("third");
  EXPECT_EQ(folder.bytes("t0.log"), "first\r\n\r\nthird\r\n");
}

TEST_F(SecureFileHandlerTest, EndsTheLinesInsideATextAlike) {
  const auto handler = folder.open();
  handler->publish("\none\ntwo\r\nthree\r\n\nfour\r");
  EXPECT_EQ(folder.bytes("t0.log"), "\r\none\r\ntwo\r\nthree\r\n\r\nfour\r\r\n");
}

TEST_F(SecureFileHandlerTest, KeepsAllOtherBytes) {
  const std::string text("a\0b\x1a\xff\t\\", 7);
  folder.open()->publish(text);
  EXPECT_EQ(folder.bytes("t0.log"), text + "\r\n");
}

TEST_F(SecureFileHandlerTest, WritesARecordAsItGoesToAStream) {
  LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "caf\\u00e9");
  record.setSourceClassName("Class");
  std::ostringstream line;
  line << LogRecord(record);
  folder.open()->publish(record);
  const std::string start = line.str().substr(0, line.str().find('\\'));
  EXPECT_EQ(folder.bytes("t0.log"), start + "\xC3\xA9\r\n");
}

TEST_F(SecureFileHandlerTest, NamesEveryGenerationWhereThePatternSaysSo) {
  const auto handler = folder.open({.limit = 1}, "a%g-%g%d%.log");
  handler->publish("old");
  handler->publish("new");
  EXPECT_EQ(folder.bytes("a0-0%d%.log"), "new\r\n");
  EXPECT_EQ(folder.bytes("a1-1%d%.log"), "old\r\n");
}

TEST_F(SecureFileHandlerTest, TakesTheGenerationOfTheCurrentFileFromTheCaller) {
  const SecureFileHandler handler(folder.path("t%g.log"), kNoLimit, 1, true, false, 7);
  EXPECT_EQ(folder.names(), (Names{"t7.log", "t7.log.lck"}));
}

TEST_F(SecureFileHandlerTest, MakesMissingDirectories) {
  folder.open({}, "a/b/t%g.log")->publish("line");
  EXPECT_EQ(folder.bytes("a/b/t0.log"), "line\r\n");
}

TEST_F(SecureFileHandlerTest, NeedsADirectory) {
  folder.write("plain", "file");
  const std::string text = thrownBy<NYXIOException>([&] { folder.open({}, "plain/t%g.log"); });
  EXPECT_EQ(text.find("KTBNV0051E"), 0U) << text;
  EXPECT_NE(text.find(NYXUtils::getParent(folder.path("plain/t"))), std::string::npos) << text;
  EXPECT_EQ(folder.names(), Names{"plain"});
  EXPECT_EQ(folder.bytes("plain"), "file");
}

TEST_F(SecureFileHandlerTest, RotatesAFileThatHasReachedExactlyTheLimit) {
  const auto handler = folder.open({.limit = 6});
  handler->publish("123");
  handler->publish("4");  // 5 bytes were there, now there are 8
  handler->publish("5678");
  EXPECT_EQ(folder.bytes("t1.log"), "123\r\n4\r\n");
  EXPECT_EQ(folder.bytes("t0.log"), "5678\r\n");  // exactly the limit
  handler->publish("9");
  EXPECT_EQ(folder.bytes("t2.log"), "123\r\n4\r\n");
  EXPECT_EQ(folder.bytes("t1.log"), "5678\r\n");
  EXPECT_EQ(folder.bytes("t0.log"), "9\r\n");
}

TEST_F(SecureFileHandlerTest, KeepsAsManyGenerationsAsTold) {
  const auto handler = folder.open({.limit = 1, .count = 3});
  for (const char* text : {"1", "2", "3", "4", "5"}) handler->publish(text);
  EXPECT_EQ(folder.names(), (Names{"t0.log", "t0.log.lck", "t1.log", "t2.log"}));
  EXPECT_EQ(folder.bytes("t0.log"), "5\r\n");
  EXPECT_EQ(folder.bytes("t1.log"), "4\r\n");
  EXPECT_EQ(folder.bytes("t2.log"), "3\r\n");
}

TEST_F(SecureFileHandlerTest, AOnceMissingGenerationCostsNoOther) {
  folder.write("t0.log", "0");
  folder.write("t2.log", "2");
  folder.open({.append = false});
  EXPECT_EQ(folder.bytes("t1.log"), "0");
  EXPECT_EQ(folder.bytes("t2.log"), "2");
}

TEST_F(SecureFileHandlerTest, ALimitOfOneByteGivesEachLineItsFile) {
  const auto handler = folder.open({.limit = 1});
  handler->publish("1");
  handler->publish("2");
  EXPECT_EQ(folder.bytes("t1.log"), "1\r\n");
  EXPECT_EQ(folder.bytes("t0.log"), "2\r\n");
}

TEST_F(SecureFileHandlerTest, ALimitOfZeroRotatesTheEmptyFileToo) {
  for (const int limit : {0, -1}) {
    const LogFolder own;
    const auto handler = own.open({.limit = limit});
    handler->publish("1");
    EXPECT_EQ(own.bytes("t0.log"), "1\r\n");
    EXPECT_EQ(own.names(), (Names{"t0.log", "t0.log.lck", "t1.log"})) << "the empty one";
    handler->publish("2");
    EXPECT_EQ(own.bytes("t0.log"), "2\r\n");
    EXPECT_EQ(own.bytes("t1.log"), "1\r\n");
    EXPECT_EQ(own.bytes("t2.log"), "");
  }
}

TEST_F(SecureFileHandlerTest, ACountOfOneEmptiesTheFileInPlaceOfRotating) {
  for (const int count : {1, 0, -5}) {
    const LogFolder own;
    const auto handler = own.open({.limit = 1, .count = count});
    handler->publish("1");
    handler->publish("2");
    EXPECT_EQ(own.names(), (Names{"t0.log", "t0.log.lck"})) << count;
    EXPECT_EQ(own.bytes("t0.log"), "2\r\n");
  }
}

TEST_F(SecureFileHandlerTest, APatternWithoutGenerationKeepsOneFile) {
  const auto handler = folder.open({.limit = 4}, "t.log");
  handler->publish("1");
  handler->publish("2");
  handler->publish("3");
  EXPECT_EQ(folder.names(), (Names{"t.log", "t.log.lck"}));
  EXPECT_EQ(folder.bytes("t.log"), "3\r\n");
}

TEST_F(SecureFileHandlerTest, AppendsToTheFileOfTheLastRun) {
  folder.open()->publish("1");
  folder.open()->publish("2");
  EXPECT_EQ(folder.names(), Names{"t0.log"});
  EXPECT_EQ(folder.bytes("t0.log"), "1\r\n2\r\n");
}

TEST_F(SecureFileHandlerTest, AppendingStartsWithARotationWhenTheLimitIsReached) {
  folder.write("t0.log", "123");
  folder.open({.limit = 4});
  EXPECT_EQ(folder.names(), Names{"t0.log"});
  folder.open({.limit = 3});
  EXPECT_EQ(folder.bytes("t1.log"), "123");
  EXPECT_EQ(folder.bytes("t0.log"), "");
}

TEST_F(SecureFileHandlerTest, WithoutAppendMovesTheFileOfTheLastRunAway) {
  folder.write("t0.log", "last");
  folder.write("t1.log", "before");
  const auto handler = folder.open({.append = false});
  EXPECT_EQ(folder.bytes("t2.log"), "before");
  EXPECT_EQ(folder.bytes("t1.log"), "last");
  EXPECT_EQ(folder.bytes("t0.log"), "");
  handler->publish("now");
  EXPECT_EQ(folder.bytes("t0.log"), "now\r\n");
}

TEST_F(SecureFileHandlerTest, WithoutAppendAndWithoutGenerationsStartsAnew) {
  folder.write("t.log", "last");
  folder.open({.append = false}, "t.log");
  EXPECT_EQ(folder.bytes("t.log"), "");
}

TEST_F(SecureFileHandlerTest, EndsALineThatAKilledProcessHasLeft) {
  folder.write("t0.log", "whole\r\npart");
  folder.open()->publish("next");
  EXPECT_EQ(folder.bytes("t0.log"), "whole\r\npart\r\nnext\r\n");
}

TEST_F(SecureFileHandlerTest, WritesALineOfAMegabyteAtOnce) {
  const std::string text(1U << 20U, 'x');
  const auto handler = folder.open({.limit = 1000});
  handler->publish(text);
  handler->publish("next");
  EXPECT_EQ(folder.bytes("t1.log"), text + "\r\n");
  EXPECT_EQ(folder.bytes("t0.log"), "next\r\n");
}

TEST_F(SecureFileHandlerTest, ASecondOneGetsNamesOfItsOwn) {
  const auto first = folder.open({.limit = 1});
  const auto second = folder.open({.limit = 1});
  const auto third = folder.open({.limit = 1});
  second->publish("1");
  first->publish("first");
  second->publish("2");
  EXPECT_EQ(folder.names(),
            (Names{"t0.log", "t0.log.1", "t0.log.1.lck", "t0.log.2", "t0.log.2.lck", "t0.log.lck", "t1.log.1"}));
  EXPECT_EQ(folder.bytes("t0.log"), "first\r\n");
  EXPECT_EQ(folder.bytes("t1.log.1"), "1\r\n");
  EXPECT_EQ(folder.bytes("t0.log.1"), "2\r\n");
}

TEST_F(SecureFileHandlerTest, TakesTheFirstNameThatIsFreeAgain) {
  auto first = folder.open();
  const auto second = folder.open();
  first.reset();
  folder.open()->publish("line");
  EXPECT_EQ(folder.bytes("t0.log"), "line\r\n");
}

TEST_F(SecureFileHandlerTest, PassesOverANameThatIsADirectory) {
  std::filesystem::create_directory(folder.path("t0.log"));
  folder.open()->publish("line");
  EXPECT_EQ(folder.bytes("t0.log.1"), "line\r\n");
}

TEST_F(SecureFileHandlerTest, GivesUpWhenNoNameIsUsable) {
  const auto handler = folder.open();
  const std::string pattern = folder.path("u%g");
  for (const char* name : {"u0", "u0.1", "u0.2"}) std::filesystem::create_directory(folder.path(name));
  EXPECT_EQ(thrownBy<NYXIOException>([&] { UniqueNumberTest::choose(*handler, pattern, 3); }),
            messageText("KTBNV0055_UNABLE_TO_CREATE_FILE", pattern));
  EXPECT_EQ(UniqueNumberTest::choose(*handler, pattern, 4), 3);
}

TEST_F(SecureFileHandlerTest, TracesALockThatIsHeld) {
  const auto first = folder.open();
  const test::TraceScope trace("SecureFileHandler=ALL");
  const test::RecordingHandler records("SecureFileHandler");
  folder.open();
  const std::string text = "Failed to lock file: " + folder.path("t0.log.lck") + " reason: it is held already";
  int found = 0;
  for (const test::Recorded& record : records.records()) {
    if (record.type == LogRecordType::DATA && record.message.find(text) != std::string::npos) {
      EXPECT_EQ(record.level.getValue(), LogLevel::FINER) << "the level of MODERATE trace";
      ++found;
    }
  }
  EXPECT_EQ(found, 1);
}

TEST_F(SecureFileHandlerTest, WorksWithoutALockThatCannotBeTaken) {
  std::filesystem::create_directory(folder.path("t0.log.lck"));
  const test::TraceScope trace("SecureFileHandler=ALL");
  const test::RecordingHandler records("SecureFileHandler");
  {
    const auto first = folder.open();
    const auto second = folder.open();
    first->publish("1");
    second->publish("2");  // knows that it is not alone
    first->publish("3");
  }
  EXPECT_EQ(folder.bytes("t0.log"), "1\r\n2\r\n3\r\n");
  EXPECT_EQ(folder.names(), (Names{"t0.log", "t0.log.lck"})) << "not its own";
  int found = 0;
  const std::string start = "Failed to lock file: " + folder.path("t0.log.lck") + " reason: KTBNV0057E";
  for (const std::string& message : records.messages()) found += message.find(start) != std::string::npos ? 1 : 0;
  EXPECT_EQ(found, 2);
}

TEST_F(SecureFileHandlerTest, CloseReleasesTheLockAndMayBeCalledTwice) {
  const auto handler = folder.open();
  EXPECT_EQ(folder.names(), (Names{"t0.log", "t0.log.lck"}));
  handler->close();
  EXPECT_EQ(folder.names(), Names{"t0.log"});
  const auto next = folder.open();
  handler->close();
  EXPECT_EQ(folder.names(), (Names{"t0.log", "t0.log.lck"})) << "the lock of the next one";
}

TEST_F(SecureFileHandlerTest, WritesOnAfterCloseAndKnowsThatItIsNotAlone) {
  const auto handler = folder.open();
  handler->publish("1");
  handler->close();
  const auto next = folder.open();
  next->publish("2");
  handler->publish("3");
  EXPECT_EQ(folder.bytes("t0.log"), "1\r\n2\r\n3\r\n");
}

TEST_F(SecureFileHandlerTest, KeepsTheLinesOfThreadsApart) {
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  const auto handler = folder.open({.limit = 5000, .count = 100});
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&handler, i] {
      for (int n = 0; n < kLines; ++n) handler->publish(std::string(50, static_cast<char>('a' + i)));
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<int> counts(kThreads);
  for (int generation = 0; generation < 100; ++generation) {
    for (const std::string& line : test::windowsLines(folder.bytes("t" + std::to_string(generation) + ".log"))) {
      ASSERT_EQ(line, std::string(50, line.at(0)));
      ++counts.at(static_cast<std::size_t>(line[0] - 'a'));
    }
  }
  EXPECT_EQ(counts, std::vector<int>(kThreads, kLines));
}

}  // namespace
}  // namespace tessel
