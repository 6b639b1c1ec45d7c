// The generations of a pattern, in the order in which they were written.
#include "trace/TraceFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TempFolder.h"

namespace tessel::host {
namespace {

using tesselctl::trace::FileSet;
using tesselctl::trace::fileSets;
using Texts = std::vector<std::string>;

// "name: file file", for each set.
Texts shown(const std::vector<FileSet>& sets) {
  Texts texts;
  for (const FileSet& set : sets) {
    texts.push_back(set.name + ":");
    for (const std::string& path : set.paths) texts.back() += ' ' + std::filesystem::path(path).filename().string();
  }
  return texts;
}

class TraceFiles : public testing::Test {
 protected:
  void make(const Texts& names) const {
    for (const std::string& name : names) folder_.write(name, "");
  }

  Texts setsOf(Texts arguments) const {
    for (std::string& argument : arguments) argument = path(argument);
    return shown(fileSets(arguments));
  }

  std::string path(const std::string& name) const { return (folder_.path() / name).string(); }

  std::string problemOf(const std::string& argument) const {
    try {
      fileSets({argument});
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  }

  test::TempFolder folder_;
};

}  // namespace

TEST_F(TraceFiles, APatternStandsForAllGenerationsTheOldestFirst) {
  make({"trace0.log", "trace1.log", "trace2.log", "trace10.log", "trace01.log", "trace.log", "trace1.log.1",
        "xtrace1.log", "trace3.txt", "tracex.log"});
  EXPECT_EQ(setsOf({"trace%g.log"}), Texts{"trace%g.log: trace10.log trace2.log trace1.log trace0.log"});
}

TEST_F(TraceFiles, AMissingGenerationLeavesTheOthers) {
  make({"trace0.log", "trace2.log"});
  EXPECT_EQ(setsOf({"trace%g.log"}), Texts{"trace%g.log: trace2.log trace0.log"});
}

TEST_F(TraceFiles, APatternMayNameTheFilesOfASecondProcess) {
  make({"trace0.log", "trace0.log.1", "trace1.log.1"});
  EXPECT_EQ(setsOf({"trace%g.log.1"}), Texts{"trace%g.log.1: trace1.log.1 trace0.log.1"});
}

TEST_F(TraceFiles, APatternMayRepeatTheGeneration) {
  make({"t1-1.log", "t1-2.log", "t2-2.log"});
  EXPECT_EQ(setsOf({"t%g-%g.log"}), Texts{"t%g-%g.log: t2-2.log t1-1.log"});
}

TEST_F(TraceFiles, APatternThatMatchesOneFileIsKnownByIt) {
  make({"trace0.log"});
  EXPECT_EQ(setsOf({"trace%g.log"}), Texts{"trace0.log: trace0.log"});
}

TEST_F(TraceFiles, NamedFilesArePutInOrder) {
  EXPECT_EQ(setsOf({"trace0.log", "trace1.log", "trace2.log"}), Texts{"trace%g.log: trace2.log trace1.log trace0.log"});
  EXPECT_EQ(setsOf({"trace.0", "trace.2", "trace.10"}), Texts{"trace.%g: trace.10 trace.2 trace.0"});
}

TEST_F(TraceFiles, FilesOfDifferentProcessesAreSets) {
  EXPECT_EQ(setsOf({"trace0.log", "trace0.log.1", "trace1.log", "trace1.log.1", "other.log"}),
            (Texts{"trace%g.log: trace1.log trace0.log", "trace%g.log.1: trace1.log.1 trace0.log.1",
                   "other.log: other.log"}));
}

TEST_F(TraceFiles, FoldersTellSetsApart) {
  EXPECT_EQ(setsOf({"a/trace0.log", "b/trace1.log"}), (Texts{"trace0.log: trace0.log", "trace1.log: trace1.log"}));
}

TEST_F(TraceFiles, LeadingZerosAreNoGeneration) {
  EXPECT_EQ(setsOf({"day01.log", "day02.log"}), (Texts{"day01.log: day01.log", "day02.log: day02.log"}));
  EXPECT_EQ(setsOf({"t12345678901.log"}), Texts{"t12345678901.log: t12345678901.log"});
}

TEST_F(TraceFiles, AFileIsReadOnce) {
  make({"trace0.log", "trace1.log"});
  EXPECT_EQ(setsOf({"trace0.log", "trace%g.log", "trace0.log"}), Texts{"trace%g.log: trace1.log trace0.log"});
}

TEST_F(TraceFiles, ANameWithoutAFolderIsInTheCurrentOne) {
  EXPECT_EQ(shown(fileSets({"trace1.log", "trace0.log", "x"})), (Texts{"trace%g.log: trace1.log trace0.log", "x: x"}));
  EXPECT_EQ(fileSets({"trace0.log"}).at(0).paths, Texts{"trace0.log"});
}

TEST_F(TraceFiles, APatternWithoutAFileIsAnError) {
  const std::string pattern = path("trace%g.log");
  EXPECT_EQ(problemOf(pattern), "no file matches " + pattern);
  const std::string lost = path("none/trace%g.log");
  EXPECT_EQ(problemOf(lost).rfind("cannot list the files of " + lost + ": ", 0), 0U) << problemOf(lost);
}

}  // namespace tessel::host
