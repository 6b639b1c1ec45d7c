#include "PerfettoReport.h"

#include <algorithm>

namespace tesselctl::trace {
namespace {

constexpr std::int64_t kSecondsOfDay = std::int64_t{24} * 60 * 60;
constexpr std::int64_t kPerSecond = 1000000;

// The times of a process's records in microseconds since the day of the first one. Records carry no date: of two
// readings the one is taken that is at most half a day away from the record before.
std::vector<std::int64_t> timesOf(const ProcessTrace& process) {
  std::vector<std::int64_t> times;
  times.reserve(process.records.size());
  std::int64_t second = process.records.empty() ? 0 : process.records.front().second;
  for (const TraceRecord& record : process.records) {
    std::int64_t step = (static_cast<std::int64_t>(record.second) - second) % kSecondsOfDay;
    if (step > kSecondsOfDay / 2) step -= kSecondsOfDay;
    if (step < -kSecondsOfDay / 2) step += kSecondsOfDay;
    second += step;
    const std::int64_t time = second * kPerSecond + std::min<std::int64_t>(record.number, kPerSecond - 1);
    times.push_back(std::max<std::int64_t>(time, 0));
  }
  return times;
}

class ThreadEvents {
 public:
  ThreadEvents(const TraceLog& log, const ThreadTree& tree, const std::vector<std::int64_t>& times,
               ReportBuffer& buffer)
      : process_(log.processes[tree.process]), tree_(tree), times_(times), buffer_(buffer) {}

  void write() {
    writeName();
    last_ = beforeFirst();
    for (std::uint32_t i = 0; i < tree_.nodes.size(); ++i) {
      endBefore(i);
      const TreeNode& node = tree_.nodes[i];
      if (node.kind == NodeKind::call) {
        writeBegin(node);
        open_.push_back(&node);
      } else {
        writeInstant(node);
      }
    }
    endBefore(static_cast<std::uint32_t>(tree_.nodes.size()));
  }

 private:
  std::string& out() { return buffer_.text(); }

  // Leaves room for the calls in front of the first record.
  std::int64_t beforeFirst() const {
    std::int64_t calls = 0;
    for (const TreeNode& node : tree_.nodes) {
      ++calls;
      if (node.begin != kNoRecord) return std::max<std::int64_t>(times_[node.begin] - calls, -1);
    }
    return -1;
  }

  void writeName() {
    out() += ",\n{\"ph\":\"M\",\"name\":\"thread_name\"";
    writeIds();
    out() += R"(,"args":{"name":"thread )" + threadText(tree_.thread) + "\"}}";
  }

  void writeIds() {
    out() += ",\"pid\":" + std::to_string(tree_.process + 1) + ",\"tid\":" + std::to_string(tree_.thread);
  }

  void beginEvent(const char* phase, std::uint32_t record) {
    buffer_.piece();
    last_ = record == kNoRecord ? last_ + 1 : std::max(last_ + 1, times_[record]);
    out() += ",\n{\"ph\":\"";
    out() += phase;
    out() += R"(","ts":)" + std::to_string(last_);
    writeIds();
  }

  void writeBegin(const TreeNode& node) {
    beginEvent("B", node.begin);
    writeLabel(node);
    out() += ",\"args\":{";
    writePlace(shownRecord(process_, node));
    if (node.begin != kNoRecord) writeArgument("arguments", process_.records[node.begin].text);
    if (entryIsMissing(node)) writeArgument("entry", "missing");
    if (node.callEnd == CallEnd::exitMissing) writeArgument("exit", "missing");
    if (node.callEnd == CallEnd::openAtEnd) writeArgument("exit", "open at the end");
    endArguments();
  }

  void writeInstant(const TreeNode& node) {
    const TraceRecord& record = process_.records[node.begin];
    beginEvent("i", node.begin);
    writeLabel(node);
    out() += R"(,"s":"t","args":{)";
    writePlace(&record);
    writeArgument("text", record.text);
    endArguments();
  }

  // The calls that node `next` is not part of.
  void endBefore(std::uint32_t next) {
    while (!open_.empty() && open_.back()->end <= next) {
      const TreeNode& node = *open_.back();
      open_.pop_back();
      beginEvent("E", node.finish);
      if (node.finish != kNoRecord && !process_.records[node.finish].text.empty()) {
        out() += ",\"args\":{";
        writeArgument("exit", process_.records[node.finish].text);
        endArguments();
      } else {
        out() += '}';
      }
    }
  }

  void writeLabel(const TreeNode& node) {
    const TraceRecord* record = shownRecord(process_, node);
    out() += R"(,"cat":")";
    out() += category(node.kind);
    out() += R"(","name":")";
    if (!record) {
      out() += node.calls == 1 ? "entry missing" : std::to_string(node.calls) + " entries missing";
    } else {
      appendJson(out(), shortClassName(record->className));
      if (!record->method.empty()) out() += '.';
      appendJson(out(), record->method);
    }
    out() += '"';
  }

  static const char* category(NodeKind kind) {
    switch (kind) {
      case NodeKind::call:
        return "call";
      case NodeKind::data:
        return "data";
      case NodeKind::throwing:
        return "throwing";
      default:
        return "other";
    }
  }

  void writePlace(const TraceRecord* record) {
    if (!record) return;
    writeArgument("class", record->className);
    if (record->object != 0) writeArgument("object", objectText(record->object));
    writeArgument("time", record->time);
  }

  void writeArgument(const char* name, std::string_view text) {
    if (text.empty()) return;
    if (!out().ends_with('{')) out() += ',';
    appendJsonString(out(), name);
    out() += ':';
    appendJsonString(out(), text);
  }

  void endArguments() { out() += "}}"; }

  const ProcessTrace& process_;
  const ThreadTree& tree_;
  const std::vector<std::int64_t>& times_;
  ReportBuffer& buffer_;
  std::vector<const TreeNode*> open_;
  std::int64_t last_ = 0;
};

void writeProcessName(std::string& out, const TraceLog& log, std::size_t process) {
  out += process == 0 ? "\n" : ",\n";
  out += R"({"ph":"M","name":"process_name","pid":)" + std::to_string(process + 1) + R"(,"args":{"name":)";
  appendJsonString(out, processText(log.processes[process]));
  out += "}}";
}

}  // namespace

void writePerfetto(const TraceLog& log, const std::vector<ThreadTree>& trees, const Sink& sink) {
  ReportBuffer buffer(sink);
  buffer.text() += R"({"displayTimeUnit":"ms","traceEvents":[)";
  for (std::size_t process = 0; process < log.processes.size(); ++process) {
    writeProcessName(buffer.text(), log, process);
  }
  std::vector<std::int64_t> times;
  const ThreadTree* last = nullptr;
  for (const ThreadTree& tree : trees) {
    if (!last || last->process != tree.process) times = timesOf(log.processes[tree.process]);
    ThreadEvents(log, tree, times, buffer).write();
    last = &tree;
  }
  buffer.text() += "\n]}\n";
  buffer.finish();
}

}  // namespace tesselctl::trace
