#pragma once

#include <array>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/aax/AAX_IHost.h"

/// What travels to a data port: at most eight bytes.
class AAX_CPacket {
 public:
  template <typename T>
  void Set(const T& value) {
    static_assert(sizeof(T) <= 8);
    const char* from = reinterpret_cast<const char*>(&value);
    size = sizeof(T);
    for (std::size_t k = 0; k < sizeof(T); ++k) bytes[k] = from[k];
  }
  const void* GetPtr() const { return bytes.data(); }
  std::uint32_t GetSize() const { return size; }

 private:
  alignas(8) std::array<char, 8> bytes{};
  std::uint32_t size = 4;
};

/// Turns changed parameters into packets for their ports. [control]
class AAX_CPacketDispatcher {
 public:
  using Generator = std::function<void(AAX_CParamID, AAX_CPacket&)>;

  void Initialize(AAX_IController* host) { controller = host; }
  /// The packet of `field` follows parameter `id`; the first dispatch posts it in any case.
  AAX_Result RegisterPacket(AAX_CParamID id, AAX_CFieldIndex field, Generator generator);
  /// The parameter has changed. Ids without a packet are ignored.
  void SetDirty(AAX_CParamID id);
  /// Posts what has changed since the last call.
  AAX_Result Dispatch();

 private:
  struct Entry {
    std::string id;
    AAX_CFieldIndex field;
    Generator generator;
    bool dirty;
  };

  AAX_IController* controller = nullptr;
  std::vector<Entry> entries;
  std::unordered_map<std::string, std::size_t> byId;
  bool anyDirty = false;
};
