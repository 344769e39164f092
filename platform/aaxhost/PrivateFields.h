#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "platform/aax/AAX_IEffect.h"
#include "platform/aaxhost/Instance.h"

namespace corvane::aaxhost {

/// Memory of a private field, for an object that the library builds there.
class FieldMemory {
 public:
  static constexpr std::align_val_t kAlignment{64};
  explicit FieldMemory(std::size_t bytes)
      : memory(static_cast<std::byte*>(::operator new(bytes, kAlignment))) {
    std::memset(memory, 0, bytes);
  }
  ~FieldMemory() { ::operator delete(memory, kAlignment); }
  FieldMemory(const FieldMemory&) = delete;
  FieldMemory& operator=(const FieldMemory&) = delete;
  std::byte* get() const { return memory; }

 private:
  std::byte* const memory;
};

/// What control sees of a field while it is rendered: a copy of the end of the last block, with what control
/// wrote since laid over it; writes wait for the start of the next block. Neither side ever sees half a
/// field.
class FieldWindow {
 public:
  FieldWindow(const std::byte* initial, std::size_t bytes);

  void read(std::size_t offset, std::size_t size, std::byte* to);           // [control]
  void write(std::size_t offset, std::size_t size, const std::byte* from);  // [control]
  void takeWrites(std::byte* memory);                                       // [render]
  void publish(const std::byte* memory);                                    // [render]

 private:
  using Bytes = std::vector<std::byte>;
  struct Image {
    Bytes bytes;
    std::uint64_t writes = 0;  ///< number of the last write in it
  };
  enum class Slot { Empty, Full, Taking };

  static constexpr unsigned kFresh = 4;  // beside the index of the image in the middle

  // three images: one being filled, one being read, one in the middle that changes hands
  Image images[3];
  unsigned filling = 0, reading = 1;
  std::atomic<unsigned> middle = 2;
  std::uint64_t taken = 0;  ///< number of the last write in the field itself; render's own

  // one write on its way, joined with those before it that were not taken
  std::atomic<Slot> slot = Slot::Empty;
  Bytes slotBytes;
  std::vector<char> slotMask;
  std::uint64_t slotNumber = 0;

  // control's own: what it wrote last, and with which write
  Bytes written;
  std::vector<std::uint64_t> writtenBy;
  std::uint64_t writes = 0;
};

/// The private fields of an instance: filled by its parameters object, freed by it, and open to control.
class PrivateFields final : public AAX_IPrivateDataAccess {
 public:
  /// Throws HostError if a field cannot be filled; those filled before are freed.
  PrivateFields(const Description& description, AAX_IEffectParameters& parameters, Mode mode);
  ~PrivateFields() override;

  /// Fills a field anew through the plug-in. [control], while nothing renders
  AAX_Result refill(AAX_CFieldIndex field);
  /// Null for an index that is no private field.
  void* memory(AAX_CFieldIndex field) const;

  AAX_Result ReadPortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                            void* buffer) override;
  AAX_Result WritePortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                             const void* buffer) override;

  void beforeRender();  // [render]
  void afterRender();   // [render]

  /// While sound runs, larger fields are the process function's alone: they hold objects, of which a copy is
  /// of no use, and each block would pay for it.
  static constexpr std::uint32_t kLargestWindow = 8192;

 private:
  struct Held {
    AAX_CFieldIndex index = 0;
    std::uint32_t bytes = 0;
    std::unique_ptr<FieldMemory> memory{};
    std::unique_ptr<FieldWindow> window{};  ///< live and small enough
  };

  /// The field, if `size` bytes at `offset` lie in it and control may reach it.
  AAX_Result find(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size, Held** found);
  void freeAll();

  AAX_IEffectParameters& parameters;
  const Mode mode;
  std::vector<Held> all;  ///< those that were filled, in order
};

}  // namespace corvane::aaxhost
