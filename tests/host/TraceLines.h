// Lines of a trace file, and the tree that the viewer makes of them.
#pragma once

#include <string>
#include <vector>

#include <tessel/LogRecord.h>

#include "trace/CallTree.h"
#include "trace/TextReport.h"
#include "trace/TraceLog.h"

namespace tessel::host {

// message: with its indentation, as "  {  connect [q1]".
inline std::string traceLine(const std::string& message, const std::string& time = "14:03:07.000.00",
                             const std::string& thread = "0000000000000108", const std::string& className = "ktb.Pipe",
                             const std::string& object = "           static") {
  std::string line = time + "  " + thread + ' ' + object + ' ' + className;
  line.resize(line.size() - className.size() + 70, ' ');
  return line + ' ' + message;
}

inline std::string joined(const std::vector<std::string>& lines, const std::string& lineEnd = "\n") {
  std::string text;
  for (const std::string& line : lines) text += line + lineEnd;
  return text;
}

// A file of records that differ in nothing but their messages.
inline std::string traceOf(const std::vector<std::string>& messages) {
  std::vector<std::string> lines;
  for (const std::string& message : messages) lines.push_back(traceLine(message));
  return joined(lines);
}

inline std::string bannerOf(const std::string& processId) {
  return "Date: Sun Dec 25 14:03:07 2022\n\nProcess ID: " + processId +
         "\n\nBUILD_LEVEL 0.1.0-abcdef0\nPROPERTIES\nname=value\n\n" + LogRecord::getLogRecordOutputHeader() + '\n';
}

// All of them are of one set, the oldest first.
inline tesselctl::trace::TraceLog readFiles(const std::vector<std::string>& files) {
  tesselctl::trace::TraceLogReader reader;
  reader.beginSet("trace%g.log");
  for (std::size_t i = 0; i < files.size(); ++i) {
    reader.addFile("trace" + std::to_string(files.size() - 1 - i) + ".log", files[i]);
  }
  return reader.take();
}

inline std::string textOf(const tesselctl::trace::TraceLog& log,
                          const std::vector<tesselctl::trace::ThreadTree>& trees) {
  std::string text;
  writeText(log, trees, [&](std::string_view part) { text += part; });
  return text;
}

// The printed trees without the column of the times.
inline std::vector<std::string> printedLines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    const std::string line = text.substr(at, end - at);
    const bool heading = line.rfind("thread ", 0) == 0 || line.empty();
    lines.push_back(heading ? line : line.substr(17));
    at = end + 1;
  }
  return lines;
}

// The lines of the only thread, without its heading.
inline std::vector<std::string> treeOf(const std::string& file) {
  const tesselctl::trace::TraceLog log = readFiles({file});
  std::vector<std::string> lines = printedLines(textOf(log, buildTrees(log)));
  if (!lines.empty()) lines.erase(lines.begin());
  return lines;
}

}  // namespace tessel::host
