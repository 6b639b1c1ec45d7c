// Formatting a message of the catalogue, look-up included, against fmt with the same text and inserts.
#include <fmt/format.h>

#include <tessel/NLS.h>
#include <tessel/RasDescriptor.h>
#include <tessel/ResourceBundle.h>

#include "BenchTimer.h"
#include "internal/Bundles.h"

namespace {

const tessel::RasDescriptor rd("BenchNls", tessel::internal::kMessages);
const std::string kKey = "KTBNV0066_OPEN_ERROR";
constexpr std::size_t kLength = 150;

volatile std::size_t sink = 0;

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace

int main() {
  const std::string text = tessel::ResourceBundle::getBundle(rd.getMessageBundle()).getString(kKey);
  const std::string pattern = replaced(replaced(replaced(text, "''", "'"), "{0}", "{}"), "{1}", "{}");
  // The inserts fill the text up to the length that is measured.
  const std::size_t missing = kLength - (pattern.size() - 4);
  const std::string name(missing / 2, 'n');
  const std::string reason(missing - missing / 2, 'r');
  const std::string formatted = tessel::NLS::format(rd, kKey, name, reason);
  if (formatted.size() != kLength || formatted != fmt::format(fmt::runtime(pattern), name, reason)) {
    std::fprintf(stderr, "bench_nls: unexpected text: %s\n", formatted.c_str());
    return 1;
  }
  const auto ours = [&] { sink = tessel::NLS::format(rd, kKey, name, reason).size(); };
  const auto peer = [&] { sink = fmt::format(fmt::runtime(pattern), name, reason).size(); };
  bench::printTimes("message of 150 bytes with two inserts", bench::compareCalls(ours, peer), "fmt::format", 3);
  return 0;
}
