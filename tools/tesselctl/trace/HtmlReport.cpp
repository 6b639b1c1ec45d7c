#include "HtmlReport.h"

#include <unordered_map>

#include "TextReport.h"
#include "TracePage.h"

namespace tesselctl::trace {
namespace {

constexpr std::string_view kDataPlace = "@TRACE_DATA@";

// Flags of a node in the page's data.
constexpr unsigned kEntryMissing = 1;
constexpr unsigned kExitMissing = 2;
constexpr unsigned kOpenAtEnd = 4;

// Texts that come often, by number.
class TextTable {
 public:
  std::size_t numberOf(std::string_view text) {
    const auto [place, isNew] = numbers_.emplace(text, texts_.size());
    if (isNew) texts_.push_back(text);
    return place->second;
  }

  const std::vector<std::string_view>& texts() const { return texts_; }

 private:
  std::unordered_map<std::string_view, std::size_t> numbers_;
  std::vector<std::string_view> texts_;
};

template <class Texts>
void appendArray(std::string& out, const Texts& texts) {
  out += '[';
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) out += ',';
    appendJsonString(out, texts[i]);
  }
  out += ']';
}

unsigned flagsOf(const TreeNode& node) {
  unsigned flags = entryIsMissing(node) ? kEntryMissing : 0;
  if (node.callEnd == CallEnd::exitMissing) flags |= kExitMissing;
  if (node.callEnd == CallEnd::openAtEnd) flags |= kOpenAtEnd;
  return flags;
}

// The order of a node's parts is what the page's script expects.
class PageData {
 public:
  PageData(const TraceLog& log, ReportBuffer& buffer) : log_(log), buffer_(buffer) {}

  void write(const std::vector<ThreadTree>& trees) {
    out() += "{\"summary\":";
    appendJsonString(out(), summaryText(log_, trees));
    out() += ",\"files\":";
    appendArray(out(), log_.fileNames);
    out() += ",\"threads\":[";
    for (const ThreadTree& tree : trees) {
      if (&tree != &trees.front()) out() += ',';
      write(tree);
    }
    out() += "],\"classes\":";
    appendArray(out(), classes_.texts());
    out() += ",\"methods\":";
    appendArray(out(), methods_.texts());
    out() += '}';
  }

 private:
  std::string& out() { return buffer_.text(); }

  void write(const ThreadTree& tree) {
    const ProcessTrace& process = log_.processes[tree.process];
    out() += "\n{\"name\":\"" + threadText(tree.thread) + R"(","process":)";
    appendJsonString(out(), processText(process));
    out() += ",\"nodes\":[";
    for (const TreeNode& node : tree.nodes) {
      out() += &node == &tree.nodes.front() ? "\n[" : ",\n[";
      write(process, node);
      out() += ']';
      buffer_.piece();
    }
    out() += "]}";
  }

  void write(const ProcessTrace& process, const TreeNode& node) {
    const TraceRecord* first = shownRecord(process, node);
    const TraceRecord* begin = node.begin == kNoRecord ? nullptr : &process.records[node.begin];
    const TraceRecord* finish = node.finish == kNoRecord ? nullptr : &process.records[node.finish];
    number(node.level);
    number(static_cast<std::uint64_t>(node.kind));
    number(flagsOf(node));
    out() += (first ? std::to_string(classes_.numberOf(first->className)) : "-1") + ',';
    out() += (first && !first->method.empty() ? std::to_string(methods_.numberOf(first->method)) : "-1") + ',';
    text(first ? objectText(first->object) : std::string());
    text(begin ? begin->time : std::string_view());
    text(finish ? finish->time : std::string_view());
    text(begin ? begin->text : std::string_view());
    text(finish ? finish->text : std::string_view());
    number(first ? first->file : 0);
    number(first ? first->line : 0);
    out() += std::to_string(node.calls);
  }

  void number(std::uint64_t value) { out() += std::to_string(value) + ','; }

  void text(std::string_view value) {
    appendJsonString(out(), value);
    out() += ',';
  }

  const TraceLog& log_;
  ReportBuffer& buffer_;
  TextTable classes_;
  TextTable methods_;
};

}  // namespace

void writeHtml(const TraceLog& log, const std::vector<ThreadTree>& trees, const Sink& sink) {
  const std::string_view page = tracePage();
  const std::size_t place = page.find(kDataPlace);
  ReportBuffer buffer(sink);
  buffer.text() += page.substr(0, place);
  PageData(log, buffer).write(trees);
  buffer.text() += page.substr(place + kDataPlace.size());
  buffer.finish();
}

}  // namespace tesselctl::trace
