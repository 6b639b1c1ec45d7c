// Requests and replies over the pipe against a bare message pipe with blocking reads and writes at both ends.
#include <array>
#include <memory>
#include <stdexcept>
#include <thread>

#include <tessel/tessel.h>

#include "BenchTimer.h"
#include "internal/pc/PipeName.h"
#include "internal/pc/UniqueHandle.h"

using tessel::internal::UniqueHandle;

namespace {

const std::string kText(64, 'x');
constexpr DWORD kMessage = 20 + 64;
constexpr DWORD kBuffer = tessel::IPCMessage::MAX_MESSAGE_DATA_LEN;

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + " failed: " + std::to_string(GetLastError()));
}

// The bare server: a thread for each connection sends back what it reads.
DWORD WINAPI echo(void* handle) {
  const UniqueHandle pipe(handle);
  std::array<char, kBuffer> bytes;
  DWORD length = 0;
  while (ReadFile(pipe.get(), bytes.data(), kBuffer, &length, nullptr) &&
         WriteFile(pipe.get(), bytes.data(), length, &length, nullptr)) {
  }
  DisconnectNamedPipe(pipe.get());
  return 0;
}

void listenBare(const std::string& name, const UniqueHandle& ready) {
  for (;;) {
    UniqueHandle pipe(CreateNamedPipeA(tessel::internal::pipePath(name).c_str(), PIPE_ACCESS_DUPLEX,
                                       PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, PIPE_UNLIMITED_INSTANCES,
                                       kBuffer, kBuffer, 0, nullptr));
    if (!pipe) fail("CreateNamedPipe");
    SetEvent(ready.get());
    if (!ConnectNamedPipe(pipe.get(), nullptr) && GetLastError() != ERROR_PIPE_CONNECTED) continue;
    const UniqueHandle thread(CreateThread(nullptr, 0, echo, pipe.release(), 0, nullptr));
    if (!thread) fail("CreateThread");
  }
}

class Echo : public tessel::IPCListener {
 public:
  tessel::IPCMessage onMessage(const tessel::IPCMessage& request) override {
    return tessel::IPCMessage(request.getMessageId(), request.getMessageText());
  }
};

UniqueHandle readyEvent(const std::string& name) {
  UniqueHandle event(CreateEventA(nullptr, TRUE, FALSE, (name + "-ready").c_str()));
  if (!event) fail("CreateEvent");
  return event;
}

// Serves until the process is ended.
int serve(const std::string& kind, const std::string& name) {
  const UniqueHandle ready = readyEvent(name);
  if (kind == "bare") listenBare(name, ready);
  Echo listener;
  const std::unique_ptr<tessel::IPCServer> server(tessel::IPCServer::newInstance(name, listener, -1));
  server->connect();
  SetEvent(ready.get());
  Sleep(INFINITE);
  return 0;
}

class ServerProcess {
 public:
  ServerProcess(const std::string& program, const std::string& kind, const std::string& name) {
    const UniqueHandle ready = readyEvent(name);
    std::string command = '"' + program + "\" serve " + kind + ' ' + name;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
      fail("CreateProcess");
    }
    process_ = UniqueHandle(process.hProcess);
    const UniqueHandle thread(process.hThread);
    const std::array<HANDLE, 2> either{ready.get(), process_.get()};
    if (WaitForMultipleObjects(2, either.data(), FALSE, INFINITE) != WAIT_OBJECT_0) fail("the server");
  }
  ~ServerProcess() { TerminateProcess(process_.get(), 0); }

 private:
  UniqueHandle process_;
};

class BareClient {
 public:
  explicit BareClient(const std::string& name) : path_(tessel::internal::pipePath(name)) {}
  void connect() {
    for (;;) {
      pipe_ =
          UniqueHandle(CreateFileA(path_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
      if (pipe_) break;
      if (GetLastError() != ERROR_PIPE_BUSY || !WaitNamedPipeA(path_.c_str(), 20000)) fail("CreateFile");
    }
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (!SetNamedPipeHandleState(pipe_.get(), &mode, nullptr, nullptr)) fail("SetNamedPipeHandleState");
  }
  void exchange() {
    DWORD length = 0;
    if (!WriteFile(pipe_.get(), bytes_.data(), kMessage, &length, nullptr)) fail("WriteFile");
    if (!ReadFile(pipe_.get(), bytes_.data(), kBuffer, &length, nullptr)) fail("ReadFile");
    if (length != kMessage) fail("the exchange");
  }
  void disconnect() { pipe_.reset(); }

 private:
  std::string path_;
  UniqueHandle pipe_;
  std::array<char, kBuffer> bytes_{};
};

class OurClient {
 public:
  explicit OurClient(const std::string& name)
      : client_(tessel::IPCClient::newInstance(name, tessel::NativeProperties())) {}
  void connect() { client_->connect(); }
  void exchange() {
    const tessel::IPCMessage reply = client_->sendMessage(tessel::IPCMessage(1, kText), -1);
    if (reply.getMessageText().size() != kText.size()) fail("the exchange");
  }
  void disconnect() { client_->disconnect(); }

 private:
  std::unique_ptr<tessel::IPCClient> client_;
};

template <class Work>
double medianOf(int samples, Work work) {
  for (int i = 0; i < samples / 10; ++i) work();
  std::vector<double> times;
  for (int i = 0; i < samples; ++i) {
    const double start = bench::now();
    work();
    times.push_back(bench::now() - start);
  }
  return bench::median(std::move(times));
}

template <class Client>
double roundTrip(const std::string& name) {
  Client client(name);
  client.connect();
  const double result = medianOf(2000, [&] { client.exchange(); });
  client.disconnect();
  return result;
}

template <class Client>
double visit(const std::string& name) {
  Client client(name);
  return medianOf(200, [&] {
    client.connect();
    client.exchange();
    client.disconnect();
  });
}

// Exchanges per second of that many clients at once.
template <class Client>
double throughput(const std::string& name, int clients) {
  const int exchanges = 6400 / clients;
  const UniqueHandle start(CreateEventA(nullptr, TRUE, FALSE, nullptr));
  std::vector<std::thread> threads;
  for (int i = 0; i < clients; ++i) {
    threads.emplace_back([&] {
      Client client(name);
      client.connect();
      client.exchange();
      WaitForSingleObject(start.get(), INFINITE);
      for (int k = 0; k < exchanges; ++k) client.exchange();
      client.disconnect();
    });
  }
  const double begin = bench::now();
  SetEvent(start.get());
  for (std::thread& thread : threads) thread.join();
  return clients * exchanges / ((bench::now() - begin) / 1e9);
}

void measure(const std::string& program) {
  const std::string name = "tessel-bench-" + std::to_string(GetCurrentProcessId());
  const std::string ours = name + "-ours";
  const std::string bare = name + "-bare";
  const ServerProcess ourServer(program, "ours", ours);
  const ServerProcess bareServer(program, "bare", bare);
  bench::printTimes(
      "request and reply, 64 bytes, one client, connection kept",
      bench::medians([&] { return roundTrip<OurClient>(ours); }, [&] { return roundTrip<BareClient>(bare); }),
      "bare message pipe", 1.3);
  for (const int clients : {4, 16}) {
    bench::printRates("requests of " + std::to_string(clients) + " clients at once",
                      bench::medians([&] { return throughput<OurClient>(ours, clients); },
                                     [&] { return throughput<BareClient>(bare, clients); }),
                      "bare message pipe", 0.6);
  }
  bench::printTimes("connect, one exchange, disconnect",
                    bench::medians([&] { return visit<OurClient>(ours); }, [&] { return visit<BareClient>(bare); }),
                    "bare server with a thread per connection", 1.25);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 4 && std::string(argv[1]) == "serve") return serve(argv[2], argv[3]);
    measure(argv[0]);
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "bench_ipc: %s\n", exception.what());
    return 1;
  }
}
