#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/aaxhost/Chunk.h"
#include "platform/aaxhost/Library.h"

namespace corvane::aaxhost {

/// Offline: one thread does everything, in an order of its own, and the result depends on nothing else.
/// Live: one thread renders, any number of others control; neither waits for the other while sound runs.
/// Unwatched: live, where nothing looks into the private fields from outside (no timer, no window); saves a
/// copy of them with each block.
enum class Mode { Offline, Live, Unwatched };

struct ParameterInfo {
  std::string id, name;
  bool automatable = false;
  std::int32_t steps = 0;     ///< states of a discrete parameter, 0 for a continuous one
  double defaultValue = 0.0;  ///< normalised
};

/// Where the song stands, for one block.
struct Transport {
  double tempo = 120.0;    ///< beats per minute
  std::int64_t ticks = 0;  ///< 960000 to the quarter note
  bool playing = false;
};

/// What the render thread itself puts into a data port: a value as the process function reads it, 4 or 8
/// bytes.
struct PortWrite {
  AAX_CFieldIndex field = 0;
  std::uint64_t bytes = 0;

  template <typename T>
  static PortWrite of(AAX_CFieldIndex field, T value) {
    PortWrite write{field};
    static_assert(sizeof value <= sizeof write.bytes);
    std::memcpy(&write.bytes, &value, sizeof value);
    return write;
  }
};

/// One block of one instance. Buffers may alias each other in any way; pointers may be null.
struct Block {
  const float* input = nullptr;
  float* output = nullptr;
  std::int32_t frames = 0;
  const float* sideChain = nullptr;      ///< null: not connected
  const Transport* transport = nullptr;  ///< null: the host has none
  /// Values that the render thread holds, put in before the block. From then on these ports are its own:
  /// packets for them are dropped. Fields that are no data port are passed over.
  std::span<const PortWrite> writes{};
};

struct Seat;
/// Several instances, one call of their process function; no instance twice. [render]
void render(std::span<const Seat> seats);

/// A living plug-in: its three objects, its fields, and everything that a host does for it.
///
/// Control operations may come from any thread; they take turns. `render` belongs to one thread at a time and
/// never waits, allocates or calls the system. An instance goes when nothing renders it any more.
class Instance {
 public:
  /// Makes the objects, initialises them and fills the private fields. Throws HostError.
  Instance(std::shared_ptr<Library> library, double sampleRateHz, Mode mode = Mode::Offline);
  ~Instance();
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;

  const Library& library() const;
  Mode mode() const;
  const std::vector<ParameterInfo>& parameters() const;

  // Values, all normalised, 0 to 1 (others are clamped). [control]

  /// Identifier of the bypass parameter, "" where there is none.
  const std::string& bypassId() const;
  AAX_Result value(const std::string& id, double* normalised) const;
  /// What the plug-in shows for a value.
  AAX_Result text(const std::string& id, double normalised, std::string* shown,
                  std::int32_t maxLength = 31) const;
  /// The host's own value: no touch. It is in the next render.
  AAX_Result automate(const std::string& id, double normalised);
  /// A person at the host's controls: touch, set, release. The value comes with the next `idle`.
  AAX_Result edit(const std::string& id, double normalised);
  AAX_Result touch(const std::string& id);
  AAX_Result set(const std::string& id, double normalised);
  AAX_Result release(const std::string& id);
  /// The bypass as automation.
  AAX_Result setBypass(bool on);

  // Time. [control]

  /// Answers the requests made before this call, each with the touch of its own moment; requests that an
  /// answer provokes wait for the next call. Returns how many were answered.
  int idle();
  /// `idle` until nothing waits. False if the answers never stop provoking requests.
  bool settle();
  /// Requests that wait for an answer.
  int waitingRequests() const;
  /// The host's timer: direct data, then the window. The first error of the two.
  AAX_Result timer();

  // State and readings. [control]

  std::vector<AAX_CTypeID> chunkIds() const;
  AAX_Result getChunk(AAX_CTypeID id, Chunk* chunk) const;
  AAX_Result setChunk(const Chunk& chunk);
  /// Last published value; peak meters start again at 0 after it.
  AAX_Result meter(AAX_CTypeID id, float* value) const;
  std::int32_t latencySamples() const;
  double sampleRate() const;
  /// Heard by the next render. Refused unless above 0 and finite.
  AAX_Result setSampleRate(double hz);
  /// Has the plug-in fill a private field anew, one that holds no object; what that means is the plug-in's
  /// own. Nothing renders meanwhile.
  AAX_Result refillField(AAX_CFieldIndex field);

  /// Keeps other control threads out and, at its end, sends on what changed, for a caller that works on the
  /// plug-in's own objects.
  class ControlScope {
   public:
    explicit ControlScope(const Instance& instance);
    ~ControlScope();
    ControlScope(const ControlScope&) = delete;
    ControlScope& operator=(const ControlScope&) = delete;

   private:
    const Instance& held;
  };
  AAX_IEffectParameters& effectParameters() const;
  AAX_IEffectGUI* effectGui() const;  ///< null where the library has none

  /// Packets, writes and rate that wait are taken, the process function runs, meters are published. [render]
  void render(const Block& block);
  /// The meters' field as the last render left it, in order of the description; peaks hold 0. [render]
  std::span<const float> renderedMeters() const;

 private:
  friend void render(std::span<const Seat> seats);
  struct State;
  const std::unique_ptr<State> state;
};

/// An instance with its block, for several at once.
struct Seat {
  Instance* instance = nullptr;
  Block block{};
};

}  // namespace corvane::aaxhost
