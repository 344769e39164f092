#pragma once

#include <array>
#include <cstdint>

#include "core/Rack.h"
#include "platform/aax/AAX.h"

namespace corvane::host {

// Fields of the render context, by index. 0 is the bypass, 1 + id the packet of parameter id.

inline constexpr AAX_CFieldIndex kBypassField = 0;
inline constexpr AAX_CFieldIndex kFirstParameterField = 1;
inline constexpr AAX_CFieldIndex kAudioInField = 361;
inline constexpr AAX_CFieldIndex kAudioOutField = 362;
inline constexpr AAX_CFieldIndex kFramesField = 363;
inline constexpr AAX_CFieldIndex kSampleRateField = 364;
inline constexpr AAX_CFieldIndex kMetersField = 365;
inline constexpr AAX_CFieldIndex kSideChainField = 366;
inline constexpr AAX_CFieldIndex kMidiField = 367;
inline constexpr AAX_CFieldIndex kTransportField = 369;
inline constexpr AAX_CFieldIndex kSharedBlockField = 370;
inline constexpr AAX_CFieldIndex kLatencySeenField = 371;
inline constexpr AAX_CFieldIndex kRateSeenField = 372;
inline constexpr AAX_CFieldIndex kProcessorField = 373;

inline constexpr float kNeverSeen = -1.666f;  // no legal value, so that the first render takes everything

// Meters: input and output peak, total reduction, then the bank's meters in rising order of id.

inline constexpr std::size_t kPlainMeters = 3, kCustomMeters = 64;
inline constexpr std::size_t kMeters = kPlainMeters + kCustomMeters;
inline constexpr int kFirstMeterId = 361, kLastMeterId = 423;
inline constexpr float kMeterOffset = 0.1f;    // tells a reading from a meter that the host has cleared
inline constexpr float kNoMeter = 1.2345678f;  // stands where there is no meter

/// The meters' ids for the host, in order of their field.
extern const std::array<AAX_CTypeID, kMeters> kMeterTypeIds;

/// Bank id that custom meter `k` carries, -1 for the last, which carries nothing.
constexpr int customMeterId(std::size_t k) {
  const int id = kFirstMeterId + static_cast<int>(k);
  return id <= kLastMeterId ? id : -1;
}

}  // namespace corvane::host
