#include <gmock/gmock.h>

#include <sstream>
#include <string>

#include <tessel/NativeProperties.h>
#include <tessel/NativePropertyItem.h>

#include "support/Records.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

NativeProperties loaded(const std::string& bytes) {
  const TempFolder folder;
  NativeProperties properties;
  properties.loadProperties(folder.write("file", bytes).string());
  return properties;
}

std::string printed(const NativeProperties& properties) {
  std::ostringstream text;
  text << properties;
  return text.str();
}

std::string valueOf(const NativeProperties& properties, const std::string& key) {
  return properties.getPropertyAsString(NativePropertyItem(key, "(absent)"));
}

TEST(NativeProperties, AreEmptyWhenMade) {
  const NativeProperties properties;
  EXPECT_EQ(printed(properties), "");
  EXPECT_FALSE(properties.contains(NativePropertyItem("k")));
  EXPECT_FALSE(properties.isAgentProperties());
  EXPECT_FALSE(properties.isLoggerProperties());
}

TEST(NativeProperties, SplitAtTheFirstEqualsSign) {
  EXPECT_EQ(valueOf(loaded("a=b=c\n"), "a"), "b=c");
  EXPECT_EQ(valueOf(loaded("a==\n"), "a"), "=");
}

TEST(NativeProperties, TrimKeyAndValue) {
  EXPECT_EQ(printed(loaded("  key  =  value with spaces  \r\n")), "key=value with spaces");
  EXPECT_EQ(printed(loaded("\t k 1\t=\tv\t2 \t\n")), "k 1=v\t2");
}

TEST(NativeProperties, TrimOnlyBlankTabAndLineEnds) { EXPECT_EQ(valueOf(loaded("k=\v1\f\n"), "k"), "\v1\f"); }

TEST(NativeProperties, SkipACommentInColumnOneOnly) {
  const NativeProperties properties = loaded("#x=1\n # not a comment=1\n!y=2\n");
  EXPECT_FALSE(properties.contains(NativePropertyItem("x")));
  EXPECT_FALSE(properties.contains(NativePropertyItem("#x")));
  EXPECT_EQ(valueOf(properties, "# not a comment"), "1");
  EXPECT_EQ(valueOf(properties, "!y"), "2");
}

TEST(NativeProperties, SkipMalformedLines) {
  EXPECT_EQ(printed(loaded("=value\nnovalue\n   =x\n\n \n\r\na=1\n")), "a=1");
}

TEST(NativeProperties, KeepAnEmptyValue) {
  const NativeProperties properties = loaded("key=\nother= \t\r\n");
  EXPECT_TRUE(properties.contains(NativePropertyItem("key")));
  EXPECT_EQ(valueOf(properties, "key"), "");
  EXPECT_EQ(valueOf(properties, "other"), "");
}

TEST(NativeProperties, HaveNoEscapesAndNoContinuationLines) {
  EXPECT_EQ(printed(loaded("a=C:\\temp\\\nb:c=\\u0041\n")), "a=C:\\temp\\,b:c=\\u0041");
}

TEST(NativeProperties, TakeTheFirstOfTwoEntries) {
  NativeProperties properties = loaded("k=1\nk=2\n");
  EXPECT_EQ(valueOf(properties, "k"), "1");
  properties.setProperty("k", "3");
  EXPECT_EQ(valueOf(properties, "k"), "3");
}

TEST(NativeProperties, DistinguishKeysByCase) { EXPECT_EQ(printed(loaded("k=1\nK=2\n")), "K=2,k=1"); }

TEST(NativeProperties, ReadALastLineWithoutEnd) { EXPECT_EQ(printed(loaded("a=1\nb=2")), "a=1,b=2"); }

TEST(NativeProperties, ReadAnEmptyFile) { EXPECT_EQ(printed(loaded("")), ""); }

TEST(NativeProperties, KeepBytesAsTheyAre) { EXPECT_EQ(valueOf(loaded("k=\xC3\xA9\xFF\n"), "k"), "\xC3\xA9\xFF"); }

TEST(NativeProperties, ReadLinesAndFilesOfAnyLength) {
  std::string bytes = "long=" + std::string(200'000, 'v') + "\n";
  for (int i = 0; i < 20'000; ++i) bytes += "key" + std::to_string(i) + "=" + std::to_string(i * 7) + "\n";
  const NativeProperties properties = loaded(bytes);
  EXPECT_EQ(valueOf(properties, "long"), std::string(200'000, 'v'));
  for (const int i : {0, 1, 9'999, 19'999}) {
    EXPECT_EQ(valueOf(properties, "key" + std::to_string(i)), std::to_string(i * 7));
  }
}

TEST(NativeProperties, SetWithoutTrimming) {
  NativeProperties properties;
  properties.setProperty(" k ", " v ");
  EXPECT_EQ(valueOf(properties, " k "), " v ");
  EXPECT_FALSE(properties.contains(NativePropertyItem("k")));
}

TEST(NativeProperties, PrintInKeyOrder) {
  NativeProperties properties;
  properties.setProperty("b", "2");
  properties.setProperty("a", "1");
  EXPECT_EQ(printed(properties), "a=1,b=2");
}

TEST(NativeProperties, AnswerByTheItemsType) {
  const NativeProperties properties = loaded("s=text\ni=7\nb=yes\n");
  EXPECT_EQ(properties.getPropertyAsString(NativePropertyItem("s", "x")), "text");
  EXPECT_EQ(properties.getPropertyAsInteger(NativePropertyItem("i", 1)), 7);
  EXPECT_TRUE(properties.getPropertyAsBoolean(NativePropertyItem("b", false)));
}

TEST(NativeProperties, AnswerTheDefaultWhenTheKeyIsAbsent) {
  const NativeProperties properties = loaded("other=1\n");
  EXPECT_EQ(properties.getPropertyAsString(NativePropertyItem("s", "x")), "x");
  EXPECT_EQ(properties.getPropertyAsInteger(NativePropertyItem("i", 50, 1, 10)), 50);
  EXPECT_TRUE(properties.getPropertyAsBoolean(NativePropertyItem("b", true)));
}

TEST(NativeProperties, HandOnWhatTheItemRefuses) {
  const NativeProperties properties = loaded("k=maybe\n");
  EXPECT_EQ(thrownBy<NYXException>([&] { properties.getPropertyAsInteger(NativePropertyItem("k", 1)); }),
            messageText("KTBNV0118_NOT_AN_INTEGER", "k", "maybe"));
  EXPECT_EQ(thrownBy<NYXException>([&] { properties.getPropertyAsBoolean(NativePropertyItem("k", true)); }),
            messageText("KTBNV0120_INVALID_BOOLEAN", "k", "maybe"));
  EXPECT_EQ(thrownBy<NYXException>([&] { properties.getPropertyAsString(NativePropertyItem("k", 1)); }),
            messageText("KTBNV0115_NOT_A_STRING_PROP", "k"));
}

TEST(NativeProperties, AnEmptyPathFailsAndChangesNoEntry) {
  NativeProperties properties = loaded("a=1\n");
  EXPECT_EQ(thrownBy<NYXException>([&] { properties.loadProperties(""); }),
            messageText("KTBNV0123_PROP_FILE_PATH_EMPTY", ""));
  EXPECT_EQ(printed(properties), "a=1");
}

TEST(NativeProperties, AFileThatCannotBeOpenedFailsAndChangesNoEntry) {
  NativeProperties properties = loaded("a=1\n");
  const std::string path = "no-such-folder/agent.properties";
  EXPECT_EQ(thrownBy<NYXException>([&] { properties.loadProperties(path); }),
            messageText("KTBNV0122_PROP_FILE_OPEN_FAILED", path));
  EXPECT_EQ(printed(properties), "a=1");
  EXPECT_TRUE(properties.isAgentProperties());  // the path was stored all the same
}

TEST(NativeProperties, ALoadReplacesEverything) {
  const TempFolder folder;
  NativeProperties properties = loaded("a=1\n");
  properties.loadProperties(folder.write("second", "b=2\n").string());
  EXPECT_EQ(printed(properties), "b=2");
}

TEST(NativeProperties, ReloadReadsTheSameFileAgain) {
  const TempFolder folder;
  NativeProperties properties;
  properties.loadProperties(folder.write("file", "a=1\nb=2\n").string());
  properties.setProperty("c", "3");
  folder.write("file", "a=9\n");
  properties.reloadProperties();
  EXPECT_EQ(printed(properties), "a=9");
}

TEST(NativeProperties, ReloadWithoutAFileFails) {
  NativeProperties properties;
  EXPECT_EQ(thrownBy<NYXException>([&] { properties.reloadProperties(); }),
            messageText("KTBNV0123_PROP_FILE_PATH_EMPTY", ""));
}

TEST(NativeProperties, ReloadOfAVanishedFileFailsAndChangesNoEntry) {
  NativeProperties properties;
  std::string path;
  {
    const TempFolder folder;
    path = folder.write("file", "a=1\n").string();
    properties.loadProperties(path);
  }
  EXPECT_EQ(thrownBy<NYXException>([&] { properties.reloadProperties(); }),
            messageText("KTBNV0122_PROP_FILE_OPEN_FAILED", path));
  EXPECT_EQ(printed(properties), "a=1");
}

TEST(NativeProperties, AreAnAgentsOrALoggersByTheirFileNameOnly) {
  const auto named = [](const std::string& name) {
    const TempFolder folder;
    NativeProperties properties;
    properties.loadProperties(folder.write(name, "agent.properties=logger.properties\n").string());
    return properties;
  };
  EXPECT_TRUE(named("myagent.properties.bak").isAgentProperties());
  EXPECT_FALSE(named("myagent.properties.bak").isLoggerProperties());
  EXPECT_FALSE(named("Agent.properties").isAgentProperties());
  EXPECT_TRUE(named("logger.properties").isLoggerProperties());
  EXPECT_FALSE(named("logger.properties").isAgentProperties());
  EXPECT_FALSE(named("Logger.properties").isLoggerProperties());
}

TEST(NativeProperties, CopyEntriesAndPath) {
  const TempFolder folder;
  NativeProperties original;
  original.loadProperties(folder.write("agent.properties", "a=1\n").string());
  NativeProperties copy(original);
  NativeProperties assigned;
  assigned = original;
  copy.setProperty("a", "2");
  EXPECT_EQ(printed(original), "a=1");
  EXPECT_EQ(printed(assigned), "a=1");
  EXPECT_TRUE(copy.isAgentProperties());
  copy.reloadProperties();
  EXPECT_EQ(printed(copy), "a=1");
}

TEST(NativeProperties, TraceTheFileThatTheyLoad) {
  const TempFolder folder;
  const std::string path = folder.write("file", "a=1\n").string();
  NativeProperties properties;
  const TraceScope trace("NativeProperties=MODERATE");
  const RecordingHandler log("NativeProperties");
  properties.loadProperties(path);
  const auto data = recordsOf(log, LogRecordType::DATA);
  ASSERT_EQ(data.size(), 1U);
  EXPECT_THAT(data[0].message, testing::HasSubstr("[Loading properties from " + path + "]"));
}

}  // namespace
}  // namespace tessel::test
