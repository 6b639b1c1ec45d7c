// Nests the records of one thread.
#pragma once

#include <cstdint>
#include <vector>

#include "CallTree.h"

namespace tesselctl::trace {

class ThreadTreeBuilder {
 public:
  explicit ThreadTreeBuilder(const ProcessTrace& process) : process_(process) {}

  // index: of a record of the process; each one greater than the one before.
  void add(std::uint32_t index);
  // Ends the calls that are still open.
  std::vector<TreeNode> take();

 private:
  struct OpenCall {
    std::uint32_t node;
    std::uint32_t depth;  // of the outermost call that the node stands for
  };

  std::uint32_t depth() const;
  void addExit(std::uint32_t index, const TraceRecord& record);
  bool endsOpenCall(std::uint32_t index, const TraceRecord& record);
  void addExitWithoutEntry(std::uint32_t index, std::uint32_t depth);
  void reach(std::uint32_t depth);
  void leaveDownTo(std::uint32_t depth, CallEnd end);
  void openMissing(std::uint32_t first, std::uint32_t calls);
  std::uint32_t addNode(NodeKind kind, std::uint32_t begin);
  void open(std::uint32_t node, std::uint32_t depth) { open_.push_back({node, depth}); }
  void close(CallEnd end);

  const ProcessTrace& process_;
  std::vector<TreeNode> nodes_;
  std::vector<OpenCall> open_;  // the innermost last
};

}  // namespace tesselctl::trace
