// Comparing two things in one run: they take turns, and the median of the rounds counts.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "internal/pc/Platform.h"

namespace bench {

inline constexpr int kRounds = 5;

// Nanoseconds since some moment, in steps of the system's performance counter.
inline double now() {
  static const double perTick = [] {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return 1e9 / static_cast<double>(frequency.QuadPart);
  }();
  LARGE_INTEGER ticks;
  QueryPerformanceCounter(&ticks);
  return static_cast<double>(ticks.QuadPart) * perTick;
}

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

template <class Work>
double timeOf(Work& work, std::uint64_t calls) {
  const double start = now();
  for (std::uint64_t i = 0; i < calls; ++i) work();
  return (now() - start) / static_cast<double>(calls);
}

// So many calls that a batch is long against the steps of the counter; warms up as well.
template <class Work>
std::uint64_t callsPerBatch(Work& work) {
  constexpr double kBatch = 50e6;  // ns
  std::uint64_t calls = 1;
  while (timeOf(work, calls) * static_cast<double>(calls) < kBatch) calls *= 2;
  return calls;
}

struct Pair {
  double ours;
  double peer;
  double ratio() const { return ours / peer; }
};

// `ours` and `peer` each measure themselves once per call.
template <class Ours, class Peer>
Pair medians(Ours ours, Peer peer) {
  std::vector<double> ourValues;
  std::vector<double> peerValues;
  for (int round = 0; round < kRounds; ++round) {
    ourValues.push_back(ours());
    peerValues.push_back(peer());
  }
  return {median(ourValues), median(peerValues)};
}

// Nanoseconds of one call of each.
template <class Ours, class Peer>
Pair compareCalls(Ours ours, Peer peer) {
  const std::uint64_t ourCalls = callsPerBatch(ours);
  const std::uint64_t peerCalls = callsPerBatch(peer);
  return medians([&] { return timeOf(ours, ourCalls); }, [&] { return timeOf(peer, peerCalls); });
}

inline std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, value < 10 ? "%.2f" : "%.1f", value);
  return text;
}

inline std::string duration(double nanoseconds) {
  if (nanoseconds < 1e3) return number(nanoseconds) + " ns";
  if (nanoseconds < 1e6) return number(nanoseconds / 1e3) + " us";
  return number(nanoseconds / 1e6) + " ms";
}

// With its sign.
inline std::string difference(double nanoseconds) {
  return (nanoseconds < 0 ? "-" : "+") + duration(std::abs(nanoseconds));
}

// A row of the table of results.
inline void printRow(const std::string& figure, const std::string& ours, const std::string& peer,
                     const std::string& ratio, const std::string& mustReach, bool reached) {
  std::printf("| %s | %s | %s | %s | %s | %s |\n", figure.c_str(), ours.c_str(), peer.c_str(), ratio.c_str(),
              mustReach.c_str(), reached ? "ok" : "MISSED");
  std::fflush(stdout);
}

// Two times: the ratio may be `limit` at most.
inline void printTimes(const std::string& figure, const Pair& times, const std::string& peer, double limit) {
  printRow(figure, duration(times.ours), duration(times.peer) + ", " + peer, number(times.ratio()),
           "at most " + number(limit), times.ratio() <= limit);
}

// Two rates per second: the ratio must be `limit` at least.
inline void printRates(const std::string& figure, const Pair& rates, const std::string& peer, double limit) {
  const auto perSecond = [](double rate) { return std::to_string(static_cast<long long>(rate)) + "/s"; };
  printRow(figure, perSecond(rates.ours), perSecond(rates.peer) + ", " + peer, number(rates.ratio()),
           "at least " + number(limit), rates.ratio() >= limit);
}

}  // namespace bench
