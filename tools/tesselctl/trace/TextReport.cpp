#include "TextReport.h"

namespace tesselctl::trace {
namespace {

constexpr std::size_t kTimeWidth = 15;
constexpr const char* kMark = "  *** ";

class ThreadText {
 public:
  ThreadText(const ProcessTrace& process, ReportBuffer& buffer) : process_(process), buffer_(buffer) {}

  void write(const ThreadTree& tree) {
    out() += "thread " + threadText(tree.thread) + ", " + processText(process_) + '\n';
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
      write(tree.nodes[i], tree.nodes[i].end > i + 1);
      out() += '\n';
      buffer_.piece();
    }
  }

 private:
  std::string& out() { return buffer_.text(); }

  void write(const TreeNode& node, bool hasInner) {
    const TraceRecord* record = shownRecord(process_, node);
    // The time of an exit above the earlier ones of what the call contains would mislead.
    const bool timed = record && !(entryIsMissing(node) && hasInner);
    beginLine(timed ? record->time : std::string_view(), node.level);
    if (node.kind == NodeKind::call) {
      writeCall(node, record);
    } else {
      writePoint(node, *record);
    }
  }

  void beginLine(std::string_view time, std::uint32_t level) {
    out() += time;
    if (time.size() < kTimeWidth) out().append(kTimeWidth - time.size(), ' ');
    out() += "  ";
    for (std::uint32_t i = 0; i < level; ++i) out() += "| ";
  }

  void writeCall(const TreeNode& node, const TraceRecord* record) {
    if (record) writeMethod(*record);
    if (record && record->kind == RecordKind::entry) writeText(" ", record->text, node.level);
    if (node.finish != kNoRecord) writeText(" ", process_.records[node.finish].text, node.level);
    if (entryIsMissing(node)) {
      out() += node.calls == 1 ? "  *** entry missing" : kMark + std::to_string(node.calls) + " entries missing";
    }
    if (node.callEnd == CallEnd::exitMissing) out() += "  *** exit missing";
    if (node.callEnd == CallEnd::openAtEnd) out() += "  *** open at the end";
  }

  void writePoint(const TreeNode& node, const TraceRecord& record) {
    switch (node.kind) {
      case NodeKind::data:
        out() += "d ";
        writeMethod(record);
        writeText(" ", record.text, node.level);
        break;
      case NodeKind::throwing:
        out() += "! ";
        writeMethod(record);
        writeText(", ", record.text, node.level);
        break;
      default:
        out() += "? ";
        appendPlain(out(), shortClassName(record.className));
        writeText(" ", record.text, node.level);
    }
  }

  void writeMethod(const TraceRecord& record) {
    appendPlain(out(), shortClassName(record.className));
    if (record.object != 0) out() += '@' + objectText(record.object);
    out() += '.';
    appendPlain(out(), record.method);
  }

  void writeText(const char* before, std::string_view text, std::uint32_t level) {
    if (text.empty()) return;
    out() += before;
    for (;;) {
      const std::size_t end = text.find('\n');
      std::string_view line = text.substr(0, end);
      if (end != std::string_view::npos && line.ends_with('\r')) line.remove_suffix(1);
      appendPlain(out(), line);
      if (end == std::string_view::npos) return;
      text.remove_prefix(end + 1);
      out() += '\n';
      buffer_.piece();
      beginLine({}, level);
      out() += "    ";
    }
  }

  const ProcessTrace& process_;
  ReportBuffer& buffer_;
};

}  // namespace

void writeText(const TraceLog& log, const std::vector<ThreadTree>& trees, const Sink& sink) {
  ReportBuffer buffer(sink);
  for (const ThreadTree& tree : trees) {
    if (&tree != &trees.front()) buffer.text() += '\n';
    ThreadText(log.processes[tree.process], buffer).write(tree);
  }
  buffer.finish();
}

std::string summaryText(const TraceLog& log, const std::vector<ThreadTree>& trees) {
  MissingCalls sum;
  for (const ThreadTree& tree : trees) {
    const MissingCalls missing = missingCalls(tree);
    sum.entries += missing.entries;
    sum.exits += missing.exits;
    sum.open += missing.open;
  }
  return "files: " + std::to_string(log.fileNames.size()) + ", records: " + std::to_string(log.records) +
         ", banner lines: " + std::to_string(log.bannerLines) + ", damaged lines: " + std::to_string(log.damagedLines) +
         "\nthreads: " + std::to_string(trees.size()) + ", missing entries: " + std::to_string(sum.entries) +
         ", missing exits: " + std::to_string(sum.exits) + ", open at the end: " + std::to_string(sum.open);
}

}  // namespace tesselctl::trace
