// What a trace point costs while trace is off.
//
// usage: bench_trace
//        bench_trace time      writes the nanoseconds of the function with a trace point, and nothing else
#include <string>
#include <vector>

#include "BenchTimer.h"
#include "TraceSamples.h"

namespace {

volatile int sink = 0;

auto call(int (*sample)(int)) {
  return [sample] { sink = sample(sink); };
}

double timeOfTraced() {
  const auto traced = call(bench::traced);
  const std::uint64_t calls = bench::callsPerBatch(traced);
  return bench::timeOf(traced, calls);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "time") {
    std::printf("%f\n", timeOfTraced());
    return 0;
  }
  const auto logger = bench::disabledLogger();
  const auto plain = call(bench::plain);
  const bench::Pair times = bench::compareCalls(call(bench::traced), plain);
  const double added = times.ours - times.peer;
  bench::printRow("disabled trace point, entry and exit", bench::duration(times.ours),
                  bench::duration(times.peer) + ", the function without it", bench::difference(added),
                  "at most +1.5 ns", added <= 1.5);
  const bench::Pair logged = bench::compareCalls(call(bench::logged), plain);
  const double addedByPeer = logged.ours - logged.peer;
  bench::printRow("disabled trace point, added time", bench::duration(added),
                  bench::duration(addedByPeer) + ", one disabled call of spdlog", bench::number(added / addedByPeer),
                  "below 1", added < addedByPeer);
  return 0;
}
