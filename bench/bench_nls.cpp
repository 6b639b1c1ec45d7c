// Formatting a message of the catalogue, look-up included, against fmt with the same text and inserts; and reading the
// catalogue itself.
#include <fmt/format.h>

#include <tessel/NLS.h>
#include <tessel/NYXUtils.h>
#include <tessel/RasDescriptor.h>
#include <tessel/ResourceBundle.h>

#include "BenchTimer.h"
#include "internal/Bundles.h"
#include "internal/pc/UniqueHandle.h"

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

// A name that was never asked for, of the same file.
std::string newBundleName() {
  static int count = 0;
  return "bench" + std::to_string(++count) + ".KTBNVMessages";
}

// The median of some first look-ups: a bundle is read once, so that each needs a name of its own. Only a few, since a
// program has a few bundles, and each new one copies the list of those known.
double firstLookUp() {
  constexpr int kTimes = 5;
  std::vector<double> times;
  for (int i = 0; i < kTimes; ++i) {
    const std::string name = newBundleName();
    const double start = bench::now();
    sink = tessel::ResourceBundle::getBundle(name).getString(kKey).size();
    times.push_back(bench::now() - start);
  }
  return bench::median(times);
}

// The bytes of the file into memory, with nothing but the system's calls.
void readFile(const std::string& path, std::string& bytes) {
  const tessel::internal::UniqueHandle file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size{};
  GetFileSizeEx(file.get(), &size);
  bytes.resize(static_cast<std::size_t>(size.QuadPart));
  DWORD length = 0;
  ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &length, nullptr);
  sink = length;
}

void measureCatalogue() {
  const std::string path = tessel::NYXUtils::getKTBProdRoot() + "/lib/messages/KTBNVMessages.properties";
  const auto read = [&path] {
    std::string bytes;
    readFile(path, bytes);
  };
  const std::uint64_t reads = bench::callsPerBatch(read);
  const bench::Pair first = bench::medians(firstLookUp, [&] { return bench::timeOf(read, reads); });
  bench::printTimes("first getBundle of the whole catalogue", first, "reading the bytes of its file", 3);
  const std::string bundle = rd.getMessageBundle();
  const auto cached = [&bundle] { sink = tessel::ResourceBundle::getBundle(bundle).getString(kKey).size(); };
  const auto nothing = [] { sink = 0; };
  const bench::Pair known = bench::compareCalls(cached, nothing);
  bench::printRow("getBundle and getString of a bundle that is known", bench::duration(known.ours),
                  bench::duration(known.peer) + ", an empty loop", bench::difference(known.ours - known.peer),
                  "at most 150 ns", known.ours <= 150);
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
  measureCatalogue();
  return 0;
}
