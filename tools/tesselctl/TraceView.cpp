#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "Output.h"
#include "trace/CallTree.h"
#include "trace/HtmlReport.h"
#include "trace/PerfettoReport.h"
#include "trace/TextReport.h"
#include "trace/TraceFiles.h"
#include "trace/TraceLog.h"

namespace tesselctl {
namespace {

constexpr int kHexadecimal = 16;

struct Options {
  std::vector<std::string> files;
  std::string html;
  std::string perfetto;
  std::string thread;
  std::string className;
};

using Report = void (*)(const trace::TraceLog& log, const std::vector<trace::ThreadTree>& trees,
                        const trace::Sink& sink);

std::optional<std::uint32_t> threadNumber(std::string_view text) {
  if (text.starts_with("0x")) text.remove_prefix(2);
  std::uint32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number, kHexadecimal);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string threadProblem(const std::string& text) {
  return threadNumber(text) ? std::string() : text + " is no thread number as the trace shows it";
}

void filter(const Options& options, const trace::TraceLog& log, std::vector<trace::ThreadTree>& trees) {
  if (!options.thread.empty()) {
    std::erase_if(trees, [wanted = threadNumber(options.thread)](const trace::ThreadTree& tree) {
      return tree.thread != wanted;
    });
  }
  if (!options.className.empty()) {
    for (trace::ThreadTree& tree : trees) keepClass(tree, log.processes[tree.process], options.className);
    std::erase_if(trees, [](const trace::ThreadTree& tree) { return tree.nodes.empty(); });
  }
}

void writeFile(const std::string& path, Report report, const trace::TraceLog& log,
               const std::vector<trace::ThreadTree>& trees) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  report(log, trees,
         [&](std::string_view part) { file.write(part.data(), static_cast<std::streamsize>(part.size())); });
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path + ": " + std::generic_category().message(errno));
}

int view(const Options& options) {
  const trace::TraceLog log = trace::readTrace(trace::fileSets(options.files));
  std::vector<trace::ThreadTree> trees = buildTrees(log);
  filter(options, log, trees);
  if (!options.html.empty()) writeFile(options.html, trace::writeHtml, log, trees);
  if (!options.perfetto.empty()) writeFile(options.perfetto, trace::writePerfetto, log, trees);
  if (options.html.empty() && options.perfetto.empty()) trace::writeText(log, trees, printText);
  printNote(summaryText(log, trees) + '\n');
  return 0;
}

}  // namespace

void addTraceView(CLI::App& group, Command& chosen) {
  CLI::App* command =
      group.add_subcommand("view", "Show the calls that trace files tell of as a tree for each thread.");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE", options->files, "Trace files; %g in a name stands for all generations")->required();
  command->add_option("--html", options->html, "Write a page to look at with a browser instead");
  command->add_option("--perfetto", options->perfetto, "Write trace events for a timeline viewer instead");
  command->add_option("--thread", options->thread, "Only this thread, by its number as the trace shows it")
      ->check(threadProblem);
  command->add_option("--class", options->className,
                      "Only records of this class and the calls around them; the name may be the part behind a dot");
  command->footer(
      "The tree goes to standard output. What was read and what is missing is counted on standard error; banners and\n"
      "damaged lines are passed over. The generations of a pattern are put in order, the oldest first.");
  command->callback([options, &chosen] { chosen = [options] { return view(*options); }; });
}

}  // namespace tesselctl
