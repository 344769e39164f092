#include "platform/aaxhost/MeterBoard.h"

#include <algorithm>

namespace corvane::aaxhost {

namespace {

std::size_t meterCount(const Description& description) {
  std::size_t count = 0;
  for (const Field& field : description.fields) count += field.meters.size();
  return count;
}

}  // namespace

MeterBoard::MeterBoard(const Description& description)
    : field(meterCount(description)), published(field.size()), peak(field.size()) {
  for (const Field& each : description.fields)
    for (const AAX_CTypeID id : each.meters) {
      const std::size_t at = place.size();
      place[id] = at;
      for (const Meter& meter : description.meters)
        if (meter.id == id) peak[at] = meter.isPeak();
    }
}

void MeterBoard::publish() {
  for (std::size_t k = 0; k < field.size(); ++k) {
    if (!peak[k]) {
      published[k].store(field[k], std::memory_order_relaxed);
      continue;
    }
    // A reader may take the value in between; then the comparison is with 0, so it ends.
    float held = published[k].load(std::memory_order_relaxed);
    while (field[k] > held &&
           !published[k].compare_exchange_weak(held, field[k], std::memory_order_relaxed)) {
    }
    field[k] = 0.0f;
  }
}

bool MeterBoard::read(AAX_CTypeID id, float* value) {
  const auto at = place.find(id);
  if (at == place.end()) return false;
  std::atomic<float>& source = published[at->second];
  *value = peak[at->second] ? source.exchange(0.0f, std::memory_order_relaxed)
                            : source.load(std::memory_order_relaxed);
  return true;
}

}  // namespace corvane::aaxhost
