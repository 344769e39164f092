#pragma once

#include <atomic>
#include <bit>
#include <cstdint>
#include <vector>

namespace corvane::aaxhost {

/// Packets on their way from control to render, without a lock.
///
/// What was posted waits, the latest per port, until it fits into the ring as a whole: so no packet is lost
/// while nothing renders, and what one control operation changed arrives in one block.
class PacketQueue {
 public:
  explicit PacketQueue(std::size_t ports)
      : latest(ports), isWaiting(ports, 0), ring(std::bit_ceil(2 * ports + 1)) {
    waiting.reserve(ports);
  }

  /// A packet's bytes for a port. [control]
  void post(std::uint32_t port, std::uint64_t bytes) {
    latest[port] = bytes;
    if (isWaiting[port]) return;
    isWaiting[port] = 1;
    waiting.push_back(port);
  }

  /// Sends what waits, all of it or nothing. [control]
  void flush() {
    const std::size_t end = tail.load(std::memory_order_relaxed);
    if (ring.size() - (end - head.load(std::memory_order_acquire)) < waiting.size()) return;
    for (std::size_t k = 0; k < waiting.size(); ++k) {
      ring[(end + k) & (ring.size() - 1)] = {waiting[k], latest[waiting[k]]};
      isWaiting[waiting[k]] = 0;
    }
    tail.store(end + waiting.size(), std::memory_order_release);
    waiting.clear();
  }

  /// `arrive(port, bytes)` for each packet sent, in order. [render]
  template <typename Arrive>
  void take(Arrive arrive) {
    const std::size_t begin = head.load(std::memory_order_relaxed);
    const std::size_t end = tail.load(std::memory_order_acquire);
    for (std::size_t at = begin; at != end; ++at) {
      const Packet& packet = ring[at & (ring.size() - 1)];
      arrive(packet.port, packet.bytes);
    }
    head.store(end, std::memory_order_release);
  }

 private:
  struct Packet {
    std::uint32_t port = 0;
    std::uint64_t bytes = 0;
  };

  // control's own
  std::vector<std::uint64_t> latest;  ///< by port
  std::vector<char> isWaiting;        ///< by port
  std::vector<std::uint32_t> waiting;

  std::vector<Packet> ring;                       ///< a power of two, room for every port twice
  alignas(64) std::atomic<std::size_t> head = 0;  // apart, so that the two threads share no cache line
  alignas(64) std::atomic<std::size_t> tail = 0;
};

}  // namespace corvane::aaxhost
