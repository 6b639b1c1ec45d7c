// Any bytes are a trace: every line is accounted for, the trees are well formed, and the reports are what they claim.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "support/Json.h"
#include "trace/CallTree.h"
#include "trace/HtmlReport.h"
#include "trace/PerfettoReport.h"
#include "trace/Report.h"
#include "trace/TextReport.h"
#include "trace/TraceLog.h"
#include "trace/TracePage.h"

namespace {

using namespace tesselctl::trace;

void require(bool holds) {
  if (!holds) std::abort();
}

// A byte 0 ends a file: the input may be several generations.
TraceLog read(const std::string& input) {
  TraceLogReader reader;
  reader.beginSet("trace%g.log");
  for (std::size_t at = 0; at <= input.size();) {
    const std::size_t end = std::min(input.find('\0', at), input.size());
    reader.addFile("trace.log", input.substr(at, end - at));
    at = end + 1;
  }
  return reader.take();
}

void checkRecord(const TraceLog& log, const TraceRecord& record) {
  const std::string& bytes = *log.contents.at(record.file);
  for (const std::string_view part : {record.time, record.className, record.method, record.text}) {
    if (part.empty()) continue;
    require(part.data() >= bytes.data() && part.data() + part.size() <= bytes.data() + bytes.size());
  }
  require((record.kind == RecordKind::other) == record.method.empty());
}

std::size_t checkTree(const ThreadTree& tree) {
  std::vector<std::uint32_t> ends;
  std::size_t records = 0;
  for (std::uint32_t i = 0; i < tree.nodes.size(); ++i) {
    const TreeNode& node = tree.nodes[i];
    while (!ends.empty() && ends.back() <= i) ends.pop_back();
    require(node.level == ends.size() && node.end > i && node.calls > 0);
    require(node.end <= (ends.empty() ? tree.nodes.size() : ends.back()));
    require(node.kind == NodeKind::call || (node.end == i + 1 && node.begin != kNoRecord));
    ends.push_back(node.end);
    records += (node.begin == kNoRecord ? 0 : 1) + (node.finish == kNoRecord ? 0 : 1);
  }
  return records;
}

template <class Report>
std::string reportOf(const TraceLog& log, const std::vector<ThreadTree>& trees, Report report) {
  std::string text;
  report(log, trees, [&](std::string_view part) { text += part; });
  return text;
}

void checkReports(const TraceLog& log, const std::vector<ThreadTree>& trees) {
  for (const char c : reportOf(log, trees, writeText)) {
    require(static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t');
  }
  require(tessel::test::JsonCheck::holds(reportOf(log, trees, writePerfetto)));
  const std::string page = reportOf(log, trees, writeHtml);
  const std::string_view mark = "@TRACE_DATA@";
  const std::size_t place = tracePage().find(mark);
  const std::size_t rest = tracePage().size() - place - mark.size();
  const std::string_view data = std::string_view(page).substr(place, page.size() - place - rest);
  require(data.find('<') == std::string_view::npos && tessel::test::JsonCheck::holds(data));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const TraceLog log = read(std::string(data, data + size));
  std::uint64_t records = 0;
  for (const ProcessTrace& process : log.processes) {
    for (const TraceRecord& record : process.records) checkRecord(log, record);
    records += process.records.size();
  }
  require(records == log.records);
  std::vector<ThreadTree> trees = buildTrees(log);
  std::uint64_t shown = 0;
  for (const ThreadTree& tree : trees) shown += checkTree(tree);
  require(shown == records);
  checkReports(log, trees);
  for (ThreadTree& tree : trees) {
    keepClass(tree, log.processes.at(tree.process), "Pipe");
    checkTree(tree);
  }
  checkReports(log, trees);
  return 0;
}
