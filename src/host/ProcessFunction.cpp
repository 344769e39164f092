#include "host/ProcessFunction.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"
#include "host/SharedBlock.h"
#include "platform/aax/AAX_IHost.h"

namespace corvane::host {

namespace {

constexpr double kTicksPerQuarter = 960000.0;

/// Ids that a host has, in rising order: worked out once, since every block walks over them. The tables of
/// the families are constants and stand before this.
const std::vector<int> kHostIds = [] {
  std::vector<int> ids;
  for (int id = 0; id < kParameters; ++id)
    if ((parameterKind(id) & kKindAnnounced) != 0) ids.push_back(id);
  return ids;
}();

/// One instance's fields.
class Record {
 public:
  explicit Record(void* const* table) : fields(table) {}
  template <typename T>
  T& at(AAX_CFieldIndex field) const {
    return *static_cast<T*>(fields[field]);
  }
  /// A field that is itself a table of channels or meters.
  template <typename T>
  T* table(AAX_CFieldIndex field) const {
    return static_cast<T*>(fields[field]);
  }

 private:
  void* const* fields;
};

void takeTransport(AAX_IMIDINode* node, TransportRecord& record) {
  const AAX_ITransport* transport = node ? node->GetTransport() : nullptr;
  if (!transport) return;
  record.flags |= TransportRecord::kTempoValid;
  transport->GetCurrentTempo(&record.tempo);
  std::int64_t ticks = 0;
  transport->GetCurrentTickPosition(&ticks);
  if (ticks != 0)
    record.flags |= TransportRecord::kPositionValid;
  else
    record.flags &= ~TransportRecord::kPositionValid;
  record.positionQuarters = static_cast<double>(ticks) / kTicksPerQuarter;
  bool playing = false;
  transport->IsTransportPlaying(&playing);
  if (playing == ((record.flags & TransportRecord::kPlaying) != 0)) return;
  record.flags |= TransportRecord::kChanged;
  record.flags =
      playing ? record.flags | TransportRecord::kPlaying : record.flags & ~TransportRecord::kPlaying;
}

/// The place of an insert's Type id, or -1.
int insertOfType(int id) {
  for (const int place : {kInsertX, kInsertY})
    if (id == kRack[static_cast<std::size_t>(place)].parameterBase) return place;
  return -1;
}

void takeParameters(const Record& record, SharedBlock& shared, CorvaneMonoEffect& effect) {
  for (const int id : kHostIds) {
    const float value = record.at<const float>(kFirstParameterField + id);
    float& seen = shared.seenValues[id];
    if (value == seen) continue;
    seen = value;
    effect.setParameter(id, static_cast<double>(value));
    // A module that comes into an insert takes the host's values, whatever stood there before.
    if (const int place = insertOfType(id); place >= 0)
      std::fill_n(&shared.seenValues[id + 1], kRack[static_cast<std::size_t>(place)].parameterCount - 1,
                  kNeverSeen);
  }
}

void takeCommands(SharedBlock& shared, CorvaneMonoEffect& effect) {
  int waiting = 0;
  for (const float value : shared.commandValues) waiting += value >= 0.0f ? 1 : 0;
  if (waiting == 0) return;  // nearly always
  for (int k = 0; k < kCommands; ++k) {
    float& value = shared.commandValues[k];
    if (!(value >= 0.0f)) continue;
    effect.setParameter(kFirstCommandId + k, static_cast<double>(value));
    value = -1.0f;
  }
}

/// The larger of `peak` and the largest magnitude; what is not a number counts nothing.
float peakOf(const float* samples, int frames, float peak) {
  if (!samples) return peak;
  // Eight at a time in two rows, since one running maximum would wait for itself at every sample.
  using Four [[gnu::vector_size(4 * sizeof(float))]] = float;
  Four highest = {}, lowest = {}, highestToo = {}, lowestToo = {};
  int i = 0;
  for (; i + 8 <= frames; i += 8) {
    Four x, y;
    std::memcpy(&x, samples + i, sizeof x), std::memcpy(&y, samples + i + 4, sizeof y);
    highest = x > highest ? x : highest, highestToo = y > highestToo ? y : highestToo;
    lowest = x < lowest ? x : lowest, lowestToo = y < lowestToo ? y : lowestToo;
  }
  for (int k = 0; k < 4; ++k) peak = std::max({peak, highest[k], -lowest[k], highestToo[k], -lowestToo[k]});
  for (; i < frames; ++i) peak = std::max(peak, std::abs(samples[i]));
  return peak;
}

void publishMeters(CorvaneMonoEffect& effect, float* meters) {
  double value = 0.0;
  effect.getMeter(kTotalReductionMeterId, &value);
  meters[2] = static_cast<float>(value);
  for (std::size_t k = 0; k < kCustomMeters; ++k) {
    const int id = customMeterId(k);
    if (id < 0) break;
    meters[kPlainMeters + k] =
        effect.getMeter(id, &value) ? static_cast<float>(value) + kMeterOffset : kNoMeter;
  }
}

void processOne(const Record& record) {
  float* const* in = record.table<float*>(kAudioInField);
  float* const* out = record.table<float*>(kAudioOutField);
  const int frames = record.at<const std::int32_t>(kFramesField);
  const std::int32_t sideChain = record.at<const std::int32_t>(kSideChainField);
  SharedBlock& shared = record.at<SharedBlock>(kSharedBlockField);
  CorvaneMonoEffect& effect = record.at<CorvaneMonoEffect>(kProcessorField);
  float* meters = record.table<float>(kMetersField);

  const float* inputs[4] = {in ? in[0] : nullptr, nullptr, in && sideChain != 0 ? in[sideChain] : nullptr,
                            nullptr};
  float* outputs[2] = {out ? out[0] : nullptr, nullptr};
  takeTransport(record.table<AAX_IMIDINode>(kTransportField), shared.adapter.record);

  const float rate = record.at<const float>(kSampleRateField);
  float& rateSeen = record.at<float>(kRateSeenField);
  // A host that fills the field anew while sound has run wants to begin from silence.
  const bool fromSilence = rateSeen == kNeverSeen && shared.seenValues[kProcessId] != kNeverSeen;
  if (rate != rateSeen) {
    rateSeen = rate;
    effect.setSampleRate(static_cast<double>(rate));
  }
  takeParameters(record, shared, effect);
  if (fromSilence) effect.reset();
  takeCommands(shared, effect);
  record.at<std::int32_t>(kLatencySeenField) = effect.getLatencySamples();
  effect.masterProcessor = &shared.adapter;

  // The output may be the input's own buffer: its peak is read first.
  const float inputPeak = peakOf(inputs[0], frames, meters[0]);
  if (record.at<const std::int32_t>(kBypassField) != 0)
    effect.processBypassedFloat(inputs, outputs, frames);
  else
    effect.processFloat(inputs, outputs, frames);
  meters[0] = inputPeak;
  meters[1] = peakOf(outputs[0], frames, meters[1]);
  publishMeters(effect, meters);
}

}  // namespace

void processInstances(void* const* inBegin[], const void* inEnd) {
  for (void* const** instance = inBegin; instance < inEnd; ++instance) processOne(Record(*instance));
}

}  // namespace corvane::host
