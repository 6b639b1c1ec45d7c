#include "CallTree.h"

#include <string_view>
#include <unordered_map>
#include <utility>

#include "ThreadTreeBuilder.h"

namespace tesselctl::trace {
namespace {

void addTrees(std::vector<ThreadTree>& trees, const TraceLog& log, std::size_t process) {
  const ProcessTrace& source = log.processes[process];
  std::vector<std::pair<std::uint32_t, ThreadTreeBuilder>> builders;
  std::unordered_map<std::uint32_t, std::size_t> indexes;
  for (std::uint32_t i = 0; i < source.records.size(); ++i) {
    const std::uint32_t thread = source.records[i].thread;
    const auto [place, isNew] = indexes.emplace(thread, builders.size());
    if (isNew) builders.emplace_back(thread, ThreadTreeBuilder(source));
    builders[place->second].second.add(i);
  }
  for (auto& [thread, builder] : builders) trees.push_back({process, thread, builder.take()});
}

bool isOfClass(std::string_view name, std::string_view wanted) {
  if (!name.ends_with(wanted)) return false;
  return name.size() == wanted.size() || name[name.size() - wanted.size() - 1] == '.';
}

// Index of the call around each node; its own for the outermost.
std::vector<std::uint32_t> parents(const std::vector<TreeNode>& nodes) {
  std::vector<std::uint32_t> result(nodes.size());
  std::vector<std::uint32_t> path;
  for (std::uint32_t i = 0; i < nodes.size(); ++i) {
    path.resize(nodes[i].level);
    result[i] = path.empty() ? i : path.back();
    path.push_back(i);
  }
  return result;
}

}  // namespace

const TraceRecord* shownRecord(const ProcessTrace& process, const TreeNode& node) {
  const std::uint32_t index = entryIsMissing(node) ? node.finish : node.begin;
  return index == kNoRecord ? nullptr : &process.records[index];
}

std::vector<ThreadTree> buildTrees(const TraceLog& log) {
  std::vector<ThreadTree> trees;
  for (std::size_t process = 0; process < log.processes.size(); ++process) addTrees(trees, log, process);
  return trees;
}

void keepClass(ThreadTree& tree, const ProcessTrace& process, const std::string& className) {
  std::vector<TreeNode>& nodes = tree.nodes;
  const std::vector<std::uint32_t> parent = parents(nodes);
  std::vector<bool> kept(nodes.size());
  for (std::size_t i = nodes.size(); i-- > 0;) {
    const TraceRecord* record = shownRecord(process, nodes[i]);
    if (record && isOfClass(record->className, className)) kept[i] = true;
    if (kept[i]) kept[parent[i]] = true;
  }
  std::vector<std::uint32_t> keptBefore(nodes.size() + 1);
  for (std::size_t i = 0; i < nodes.size(); ++i) keptBefore[i + 1] = keptBefore[i] + (kept[i] ? 1 : 0);
  std::vector<TreeNode> remaining;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (!kept[i]) continue;
    remaining.push_back(nodes[i]);
    remaining.back().end = keptBefore[nodes[i].end];
  }
  nodes = std::move(remaining);
}

MissingCalls missingCalls(const ThreadTree& tree) {
  MissingCalls missing;
  for (const TreeNode& node : tree.nodes) {
    if (node.kind != NodeKind::call) continue;
    if (entryIsMissing(node)) missing.entries += node.calls;
    if (node.callEnd == CallEnd::exitMissing) missing.exits += node.calls;
    if (node.callEnd == CallEnd::openAtEnd) missing.open += node.calls;
  }
  return missing;
}

}  // namespace tesselctl::trace
