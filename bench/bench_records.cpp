// Trace records and events on their whole way to a rotating file, line by line, against lines that are ready.
// The peer in a Java virtual machine is a program of its own, which writes the nanoseconds of a record.
//
// usage: bench_records NANOSECONDS_OF_JAVA
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <tessel/tessel.h>

#include "BenchTimer.h"
#include "TempFile.h"
#include "internal/pc/UniqueHandle.h"

namespace {

constexpr int kLimit = 20 << 20;
constexpr int kCount = 3;
constexpr int kThreads = 4;
constexpr int kPerThread = 20000;

const tessel::RasDescriptor traced("BenchRecords", "com.kelvo.tessel.nativ.common.KTBNVMessages");
const tessel::RasDescriptor quiet("BenchQuiet", "com.kelvo.tessel.nativ.common.KTBNVMessages");

volatile bool sink = false;

// One record a call, of a method with an argument; the name is popped by the exit, which is the second one. Each thread
// calls its own.
class Record {
 public:
  void operator()() {
    entered_ = !entered_;
    if (entered_) {
      tessel::Trace::entry(traced, &traced, "method", argument_);
    } else {
      tessel::Trace::exit(traced, &traced, "method", argument_, "string");
    }
  }

 private:
  const std::string argument_ = "argument";
  bool entered_ = false;
};

void event() { tessel::EventLog::infoNoFormat(traced, "KTBNV0000I: An event of the usual length about 'something'."); }

// Nanoseconds of one call when so many threads make calls at once.
template <class Work>
double perCall(int threads, Work work) {
  const double start = bench::now();
  std::vector<std::thread> running;
  for (int i = 0; i < threads; ++i) {
    running.emplace_back([work]() mutable {
      for (int n = 0; n < kPerThread; ++n) work();
    });
  }
  for (std::thread& thread : running) thread.join();
  return (bench::now() - start) / (threads * kPerThread);
}

// Writes the same line again and again.
class PlainFile {
 public:
  PlainFile(const std::filesystem::path& path, std::string line)
      : line_(std::move(line)),
        file_(CreateFileA(path.string().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {}

  void write() {
    DWORD written = 0;
    WriteFile(file_.get(), line_.data(), static_cast<DWORD>(line_.size()), &written, nullptr);
  }

 private:
  std::string line_;
  tessel::internal::UniqueHandle file_;
};

// The average length of the lines of two records, the last ones of the file.
std::string lineLike(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string last;
  std::string beforeLast;
  for (std::string line; std::getline(stream, line);) {
    beforeLast = std::move(last);
    last = std::move(line);
  }
  return std::string((last.size() + beforeLast.size()) / 2, 'x') + "\n";
}

void compareRecords(const std::filesystem::path& folder, spdlog::logger& logger, double javaTime) {
  Record record;
  record();
  record();
  PlainFile plain(folder / "plain.log", lineLike(folder / "trace0.log"));
  const auto write = [&plain] { plain.write(); };
  const auto log = [&logger] { logger.info("method {} [{}]", "method", "argument"); };
  bench::printTimes("enabled trace record to a rotating file", bench::compareCalls(std::ref(record), write),
                    "WriteFile of a ready line", 1.6);
  bench::printTimes("enabled trace record to a rotating file", bench::compareCalls(std::ref(record), log),
                    "spdlog, rotating sink, flush per record", 0.5);
  const std::uint64_t records = bench::callsPerBatch(record);
  bench::printTimes("enabled trace record to a rotating file",
                    bench::medians([&] { return bench::timeOf(record, records); }, [&] { return javaTime; }),
                    "java.util.logging's FileHandler in a warm Java virtual machine", 0.5);
  const auto one = [] { return perCall(1, Record()); };
  const auto four = [] { return perCall(kThreads, Record()); };
  bench::printTimes("trace record from four threads, per record", bench::medians(four, one), "one thread", 1.5);
  const auto fourLog = [&log] { return perCall(kThreads, log); };
  bench::printTimes("trace record from four threads, per record", bench::medians(four, fourLog), "spdlog", 1);
  bench::printTimes("event to the event log", bench::compareCalls(event, std::ref(record)), "trace record", 1.3);
}

void measureIsOn() {
  const tessel::TraceLevel flow = tessel::TraceLevel::FLOW;
  const auto ask = [&flow] { sink = quiet.isOn(flow); };
  const auto nothing = [] { sink = false; };
  const bench::Pair times = bench::compareCalls(ask, nothing);
  const double added = times.ours - times.peer;
  bench::printRow("isOn of a class that is off while trace is available", bench::duration(times.ours),
                  bench::duration(times.peer) + ", an empty loop", bench::difference(added), "at most +2 ns",
                  added <= 2);
}

}  // namespace

int main(int argc, char** argv) {
  const double javaTime = argc == 2 ? std::strtod(argv[1], nullptr) : 0;
  if (!(javaTime > 0)) {
    std::fprintf(stderr, "bench_records: how long does Java take?\n");
    return 1;
  }
  const bench::TempFile anyFile("any.log");
  const std::filesystem::path folder = std::filesystem::path(anyFile.path()).parent_path();
  tessel::NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", folder.string());
  const auto properties = [&folder](const char* name) {
    return tessel::LogFileProperties((folder / name).string(), kLimit, kCount, true, false);
  };
  tessel::RAS::initialize(tessel::RASEnvironment::DAEMON, properties("event%g.log"), properties("trace%g.log"), "");
  tessel::RAS::setLevel("BenchRecords=FLOW");
  {
    const auto file =
        std::make_shared<spdlog::sinks::rotating_file_sink_mt>((folder / "spdlog.log").string(), kLimit, kCount);
    spdlog::logger logger("BenchRecords", file);
    logger.flush_on(spdlog::level::trace);
    compareRecords(folder, logger, javaTime);
  }
  measureIsOn();
  tessel::RAS::shutdown();
  return 0;
}
