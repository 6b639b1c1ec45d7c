// The calls of each thread, nested as the indentation of their records says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "TraceLog.h"

namespace tesselctl::trace {

enum class NodeKind : std::uint8_t { call, data, throwing, other };

// How a call ended.
enum class CallEnd : std::uint8_t { left, exitMissing, openAtEnd };

constexpr std::uint32_t kNoRecord = UINT32_MAX;

// Without an entry's record the entry is missing: it was written before the first line that is left, or lost.
struct TreeNode {
  std::uint32_t level = 0;           // number of calls around it in the tree
  std::uint32_t end = 0;             // index of the first node behind it that it does not contain
  std::uint32_t begin = kNoRecord;   // the entry or the point itself; index into the records of the process
  std::uint32_t finish = kNoRecord;  // the exit
  std::uint32_t calls = 1;           // more than 1: so many nested calls of which nothing is known
  NodeKind kind = NodeKind::call;
  CallEnd callEnd = CallEnd::left;
};

// What is known first of a node: null for a call that only its inner calls tell of.
const TraceRecord* shownRecord(const ProcessTrace& process, const TreeNode& node);

inline bool entryIsMissing(const TreeNode& node) { return node.begin == kNoRecord; }

// The nodes stand in the order of the records, each in front of what it contains.
struct ThreadTree {
  std::size_t process = 0;  // index into the log's
  std::uint32_t thread = 0;
  std::vector<TreeNode> nodes;
};

// In the order of the processes and of the threads' first records.
std::vector<ThreadTree> buildTrees(const TraceLog& log);

// Keeps the records of a class and the calls around them. The name is the whole one or the part behind a dot.
void keepClass(ThreadTree& tree, const ProcessTrace& process, const std::string& className);

struct MissingCalls {
  std::uint64_t entries = 0;
  std::uint64_t exits = 0;
  std::uint64_t open = 0;
};

MissingCalls missingCalls(const ThreadTree& tree);

}  // namespace tesselctl::trace
