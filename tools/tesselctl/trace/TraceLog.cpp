#include "TraceLog.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <utility>

#include <tessel/LogRecord.h>

#include "TraceLine.h"

namespace tesselctl::trace {

TraceLogReader::TraceLogReader() {
  const std::string header = tessel::LogRecord::getLogRecordOutputHeader();
  const std::size_t end = header.find('\n');
  header_ = header.substr(0, end);
  rule_ = header.substr(end + 1);
}

void TraceLogReader::beginSet(const std::string& name) {
  set_ = name;
  inProcess_ = false;
}

void TraceLogReader::addFile(const std::string& name, std::string bytes) {
  log_.fileNames.push_back(name);
  log_.contents.push_back(std::make_unique<const std::string>(std::move(bytes)));
  lineNumber_ = 0;
  fileStart_ = true;
  std::string_view rest = *log_.contents.back();
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    ++lineNumber_;
    addLine(line);
  }
  settleAll();
  recordOpen_ = false;
  afterHeader_ = false;
}

TraceLog TraceLogReader::take() {
  inProcess_ = false;
  return std::exchange(log_, TraceLog());
}

void TraceLogReader::addLine(std::string_view line) {
  const bool afterHeader = std::exchange(afterHeader_, false);
  if (afterHeader && line == rule_) {
    ++log_.bannerLines;
  } else if (startsRecord(line)) {
    addRecord(line);
  } else if (line == header_) {
    addHeader();
  } else {
    following_.add(line);
  }
}

void TraceLogReader::addRecord(std::string_view line) {
  settleAll();
  fileStart_ = false;
  std::optional<TraceRecord> record = parseRecord(line);
  recordOpen_ = record.has_value();
  if (!record) {
    ++log_.damagedLines;
    return;
  }
  if (!inProcess_) beginProcess({});
  record->file = static_cast<std::uint32_t>(log_.fileNames.size() - 1);
  record->line = lineNumber_;
  log_.processes.back().records.push_back(*record);
  ++log_.records;
}

void TraceLogReader::addHeader() {
  const std::optional<FollowingLines::Banner> banner = following_.banner();
  std::uint64_t before = following_.count();
  if (fileStart_) {
    before = 0;
  } else if (banner) {
    before = banner->linesBefore;
  }
  log_.bannerLines += following_.count() - before + 1;
  settle(before, banner ? banner->lastLineBefore : following_.last());
  recordOpen_ = false;
  afterHeader_ = true;
  beginProcess(banner ? banner->processId : std::string());
}

// What is known by now of the lines since the last record: so many of them are part of it, or of nothing.
void TraceLogReader::settle(std::uint64_t lines, std::string_view last) {
  if (!recordOpen_) {
    log_.damagedLines += lines;
  } else if (lines > 0) {
    std::string_view& text = log_.processes.back().records.back().text;
    text = std::string_view(text.data(), static_cast<std::size_t>(last.data() + last.size() - text.data()));
  }
  following_.clear();
}

// A process that opens its trace file once more goes on as the same one.
void TraceLogReader::beginProcess(const std::string& processId) {
  if (inProcess_ && !processId.empty() && log_.processes.back().processId == processId) return;
  log_.processes.push_back({set_, processId, {}});
  inProcess_ = true;
}

TraceLog readTrace(const std::vector<FileSet>& sets) {
  TraceLogReader reader;
  for (const FileSet& set : sets) {
    reader.beginSet(set.name);
    for (const std::string& path : set.paths) {
      reader.addFile(std::filesystem::path(path).filename().string(), readFile(path));
    }
  }
  return reader.take();
}

}  // namespace tesselctl::trace
