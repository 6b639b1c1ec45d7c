// The records of trace files, put together from their lines.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "FollowingLines.h"
#include "TraceFiles.h"
#include "TraceRecord.h"

namespace tesselctl::trace {

// What one process wrote, in the order in which it stands in the files.
struct ProcessTrace {
  std::string files;      // the name of its set of files
  std::string processId;  // empty when the banner that tells it is not there any more
  std::vector<TraceRecord> records;
};

// Owns the bytes that its records point into.
struct TraceLog {
  std::vector<std::unique_ptr<const std::string>> contents;
  std::vector<std::string> fileNames;
  std::vector<ProcessTrace> processes;
  std::uint64_t records = 0;
  std::uint64_t bannerLines = 0;
  std::uint64_t damagedLines = 0;
};

// Takes any bytes: a line that is neither part of a record nor of a banner is counted as damaged.
class TraceLogReader {
 public:
  TraceLogReader();

  // The files that follow belong to another set: what they hold is of other processes.
  void beginSet(const std::string& name);
  // The oldest file of a set first.
  void addFile(const std::string& name, std::string bytes);
  // The reader is empty afterwards.
  TraceLog take();

 private:
  void addLine(std::string_view line);
  void addRecord(std::string_view line);
  void addHeader();
  void settle(std::uint64_t lines, std::string_view last);
  void settleAll() { settle(following_.count(), following_.last()); }
  void beginProcess(const std::string& processId);

  TraceLog log_;
  std::string header_;
  std::string rule_;
  std::string set_;
  std::uint32_t lineNumber_ = 0;
  FollowingLines following_;
  bool recordOpen_ = false;  // the last record takes the lines that follow it
  bool fileStart_ = false;   // no record yet in this file: lines may be those of a banner
  bool afterHeader_ = false;
  bool inProcess_ = false;
};

// Throws std::runtime_error when a file cannot be read.
TraceLog readTrace(const std::vector<FileSet>& sets);

}  // namespace tesselctl::trace
