#include "ThreadTreeBuilder.h"

#include <algorithm>
#include <utility>

namespace tesselctl::trace {
namespace {

// Each call whose entry is missing gets a node, since its exit may still tell its name; but a damaged line may claim
// any depth, and memory must stay in proportion to the file.
constexpr std::uint32_t kMostMissingNodes = 32;

NodeKind nodeKind(RecordKind kind) {
  switch (kind) {
    case RecordKind::data:
      return NodeKind::data;
    case RecordKind::throwing:
      return NodeKind::throwing;
    case RecordKind::other:
      return NodeKind::other;
    default:
      return NodeKind::call;
  }
}

}  // namespace

void ThreadTreeBuilder::add(std::uint32_t index) {
  const TraceRecord& record = process_.records[index];
  if (record.kind == RecordKind::exit) {
    addExit(index, record);
    return;
  }
  // A record without indentation stands wherever the thread is.
  if (record.depth > 0) reach(record.depth - 1);
  const std::uint32_t node = addNode(nodeKind(record.kind), index);
  if (record.kind == RecordKind::entry) open(node, record.depth);
}

std::vector<TreeNode> ThreadTreeBuilder::take() {
  leaveDownTo(0, CallEnd::openAtEnd);
  return std::exchange(nodes_, {});
}

std::uint32_t ThreadTreeBuilder::depth() const {
  if (open_.empty()) return 0;
  return open_.back().depth + nodes_[open_.back().node].calls - 1;
}

void ThreadTreeBuilder::addExit(std::uint32_t index, const TraceRecord& record) {
  leaveDownTo(record.depth, CallEnd::exitMissing);
  if (record.withoutEntry || !endsOpenCall(index, record)) addExitWithoutEntry(index, record.depth);
}

bool ThreadTreeBuilder::endsOpenCall(std::uint32_t index, const TraceRecord& record) {
  if (depth() != record.depth) return false;
  TreeNode& node = nodes_[open_.back().node];
  if (node.calls > 1) return false;
  if (!entryIsMissing(node) && process_.records[node.begin].method != record.method) return false;
  node.finish = index;
  close(CallEnd::left);
  return true;
}

void ThreadTreeBuilder::addExitWithoutEntry(std::uint32_t index, std::uint32_t depth) {
  reach(depth - 1);
  const std::uint32_t node = addNode(NodeKind::call, kNoRecord);
  nodes_[node].finish = index;
}

// Makes the innermost open call the one of this depth.
void ThreadTreeBuilder::reach(std::uint32_t depth) {
  leaveDownTo(depth, CallEnd::exitMissing);
  const std::uint32_t known = this->depth();
  if (known >= depth) return;
  const std::uint32_t missing = depth - known;
  const std::uint32_t together = missing > kMostMissingNodes ? missing - kMostMissingNodes + 1 : 1;
  openMissing(known + 1, together);
  for (std::uint32_t next = known + 1 + together; next <= depth; ++next) openMissing(next, 1);
}

void ThreadTreeBuilder::leaveDownTo(std::uint32_t depth, CallEnd end) {
  while (!open_.empty() && this->depth() > depth) {
    if (open_.back().depth > depth) {
      close(end);
    } else {
      nodes_[open_.back().node].calls = depth - open_.back().depth + 1;
    }
  }
}

void ThreadTreeBuilder::openMissing(std::uint32_t first, std::uint32_t calls) {
  const std::uint32_t node = addNode(NodeKind::call, kNoRecord);
  nodes_[node].calls = calls;
  open(node, first);
}

std::uint32_t ThreadTreeBuilder::addNode(NodeKind kind, std::uint32_t begin) {
  const auto index = static_cast<std::uint32_t>(nodes_.size());
  TreeNode node;
  node.level = static_cast<std::uint32_t>(open_.size());
  node.end = index + 1;
  node.begin = begin;
  node.kind = kind;
  nodes_.push_back(node);
  return index;
}

void ThreadTreeBuilder::close(CallEnd end) {
  TreeNode& node = nodes_[open_.back().node];
  node.end = static_cast<std::uint32_t>(nodes_.size());
  node.callEnd = end;
  open_.pop_back();
}

}  // namespace tesselctl::trace
