// What the reports of a trace share: where they write to and how they show texts.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "CallTree.h"

namespace tesselctl::trace {

// Takes the next part of a report.
using Sink = std::function<void(std::string_view)>;

// Collects small pieces into large ones.
class ReportBuffer {
 public:
  explicit ReportBuffer(Sink sink) : sink_(std::move(sink)) {}

  std::string& text() { return text_; }
  // To be called between two pieces: hands on what has come together when it is enough.
  void piece();
  void finish();

 private:
  Sink sink_;
  std::string text_;
};

// Bytes of the UTF-8 character at the start of the text; 0 when there is none.
std::size_t characterLength(std::string_view text);

// One line for a terminal: control characters and what is not UTF-8 are written as \xHH.
void appendPlain(std::string& out, std::string_view line);

// The inside of a JSON string that may stand in a script of a page. What is not UTF-8 is shown as \xHH, and a line ends
// in a line feed alone.
void appendJson(std::string& out, std::string_view text);

// `"text"`
void appendJsonString(std::string& out, std::string_view text);

// Sixteen digits, as the trace shows a thread.
std::string threadText(std::uint32_t thread);

// As short as possible; empty for 0.
std::string objectText(std::uint64_t object);

// "process 264 of trace%g.log"
std::string processText(const ProcessTrace& process);

// The part of a class name behind the last dot.
std::string_view shortClassName(std::string_view name);

}  // namespace tesselctl::trace
