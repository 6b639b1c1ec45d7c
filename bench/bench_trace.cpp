// What a trace point costs while trace is off.
#include <vector>

#include "BenchTimer.h"
#include "TraceSamples.h"

namespace {

volatile int sink = 0;

}  // namespace

int main() {
  const auto logger = bench::disabledLogger();
  const auto call = [](int (*sample)(int)) { return [sample] { sink = sample(sink); }; };
  const auto plain = call(bench::plain);
  const bench::Pair times = bench::compareCalls(call(bench::traced), plain);
  const double added = times.ours - times.peer;
  bench::printRow("disabled trace point, entry and exit", bench::duration(times.ours),
                  bench::duration(times.peer) + ", the function without it", "+" + bench::duration(added),
                  "at most +1.5 ns", added <= 1.5);
  const bench::Pair logged = bench::compareCalls(call(bench::logged), plain);
  const double addedByPeer = logged.ours - logged.peer;
  bench::printRow("disabled trace point, added time", bench::duration(added),
                  bench::duration(addedByPeer) + ", one disabled call of spdlog", bench::number(added / addedByPeer),
                  "below 1", added < addedByPeer);
  return 0;
}
