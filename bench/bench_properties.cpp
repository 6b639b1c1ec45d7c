// Loading properties files. The peer of the large files is a Java virtual machine: a program of its own, which writes
// the nanoseconds of one load, the median of its rounds after warm-up.
//
// usage: bench_properties generate FOLDER
//        bench_properties FOLDER NANOSECONDS_OF_ORDERED NANOSECONDS_OF_SHUFFLED
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include <tessel/NativeProperties.h>
#include <tessel/NativePropertyItem.h>

#include "BenchTimer.h"
#include "internal/pc/UniqueHandle.h"

namespace {

constexpr unsigned kEntries = 200000;
constexpr int kAgentLines = 40;

void save(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  if (!(file << text).flush()) throw std::runtime_error("cannot write " + path);
}

// 52 bytes, so that 200,000 of them make 10 MB.
std::string line(unsigned i) {
  char text[64];
  std::snprintf(text, sizeof text, "component.%06u.setting=value-%06u-abcdefghijklm\n", i, i);
  return text;
}

void generate(const std::string& folder) {
  std::string ordered;
  std::string shuffled;
  // The step has no factor in common with the number of entries: each comes once.
  constexpr unsigned kStep = 77773;
  for (unsigned i = 0; i < kEntries; ++i) {
    ordered += line(i);
    shuffled += line(static_cast<unsigned>(std::uint64_t{i} * kStep % kEntries));
  }
  std::string agent = "# Settings of the agent\n";
  for (int i = 1; i < kAgentLines; ++i) {
    agent += i % 8 == 0 ? "# The next group of settings\n"
                        : "agentSetting" + std::to_string(i) + "=some value of setting " + std::to_string(i) + '\n';
  }
  save(folder + "/ordered.properties", ordered);
  save(folder + "/shuffled.properties", shuffled);
  save(folder + "/agent.properties", agent);
}

double timeOfLoad(const std::string& path) {
  tessel::NativeProperties properties;
  const double start = bench::now();
  properties.loadProperties(path);
  const double time = bench::now() - start;
  const std::string last = "component." + std::to_string(kEntries - 1) + ".setting";
  if (!properties.contains(tessel::NativePropertyItem(last))) throw std::runtime_error("entry lost in " + path);
  return time;
}

void compareLarge(const std::string& figure, const std::string& path, double javaTime) {
  const bench::Pair times = bench::medians([&] { return timeOfLoad(path); }, [&] { return javaTime; });
  bench::printTimes(figure, times, "Properties.load of a warm Java virtual machine", 1);
}

void compareSmall(const std::string& path) {
  const auto ours = [&] { tessel::NativeProperties().loadProperties(path); };
  const auto peer = [&] {
    char bytes[4096];
    DWORD length = 0;
    const tessel::internal::UniqueHandle file(CreateFileA(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file || !ReadFile(file.get(), bytes, sizeof bytes, &length, nullptr))
      throw std::runtime_error("cannot read " + path);
  };
  bench::printTimes("properties: an agent's file of 40 lines", bench::compareCalls(ours, peer),
                    "opening and reading the same bytes", 2);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 3 && std::string(argv[1]) == "generate") {
      generate(argv[2]);
      return 0;
    }
    if (argc != 4) throw std::runtime_error("wrong number of arguments");
    const std::string folder = argv[1];
    compareLarge("properties: 10 MB, 200,000 entries in order", folder + "/ordered.properties",
                 std::strtod(argv[2], nullptr));
    compareLarge("properties: 10 MB, 200,000 entries shuffled", folder + "/shuffled.properties",
                 std::strtod(argv[3], nullptr));
    compareSmall(folder + "/agent.properties");
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "bench_properties: %s\n", exception.what());
    return 1;
  }
}
