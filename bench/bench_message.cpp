// A message to bytes and back, against the same bytes written and read by hand.
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include <tessel/IPCMessage.h>

#include "BenchTimer.h"

namespace {

std::atomic<long> allocations{0};

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using Buffer = std::array<unsigned char, tessel::IPCMessage::MAX_MESSAGE_DATA_LEN + 4>;

struct Plain {
  std::int32_t id = 0;
  std::int32_t status = 0;
  std::string text;
};

std::uint32_t get(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

void put(unsigned char* bytes, std::uint32_t value) {
  bytes[0] = static_cast<unsigned char>(value >> 24);
  bytes[1] = static_cast<unsigned char>(value >> 16);
  bytes[2] = static_cast<unsigned char>(value >> 8);
  bytes[3] = static_cast<unsigned char>(value);
}

Plain byHand(const Plain& message, Buffer& buffer) {
  unsigned char* bytes = buffer.data();
  std::memcpy(bytes, "NYXI", 4);
  put(bytes + 4, 8);
  put(bytes + 8, static_cast<std::uint32_t>(message.id));
  put(bytes + 12, static_cast<std::uint32_t>(message.status));
  put(bytes + 16, static_cast<std::uint32_t>(message.text.size()));
  std::memcpy(bytes + 20, message.text.data(), message.text.size());
  return {static_cast<std::int32_t>(get(bytes + 8)), static_cast<std::int32_t>(get(bytes + 12)),
          std::string(reinterpret_cast<const char*>(bytes) + 20, get(bytes + 16))};
}

tessel::IPCMessage byLibrary(const tessel::IPCMessage& message, Buffer& buffer) {
  int length = 0;
  message.getMessageBytes(buffer.data(), &length);
  return tessel::IPCMessage(buffer.data(), static_cast<unsigned>(length));
}

volatile std::int32_t sink = 0;

}  // namespace

int main() {
  const std::string text(64, 'x');
  const tessel::IPCMessage message(1, text);
  const Plain plain{1, 0, text};
  Buffer buffer{};
  const auto ours = [&] { sink = static_cast<std::int32_t>(byLibrary(message, buffer).getMessageId()); };
  const auto peer = [&] { sink = byHand(plain, buffer).id; };
  const auto count = [](const auto& work) {
    const long before = allocations;
    work();
    return allocations - before;
  };
  const long ourAllocations = count(ours);
  const long peerAllocations = count(peer);
  bench::printTimes("message to bytes and back, 64 bytes", bench::compareCalls(ours, peer), "by hand", 2);
  bench::printRow("the same, allocations", std::to_string(ourAllocations),
                  std::to_string(peerAllocations) + ", by hand", bench::number(static_cast<double>(ourAllocations)),
                  "at most 1", ourAllocations <= 1);
  return 0;
}
