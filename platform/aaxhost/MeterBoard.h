#pragma once

#include <atomic>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/aaxhost/Description.h"

namespace corvane::aaxhost {

/// The meters of an instance: the memory that the process function writes, and what of it was published.
class MeterBoard {
 public:
  explicit MeterBoard(const Description& description);

  /// What stands in the meters field. [render]
  float* memory() { return field.data(); }
  std::span<const float> rendered() const { return field; }
  /// After a render: plain values as they are, peaks when they are larger than what waits to be read.
  /// [render]
  void publish();
  /// False for an unknown meter. Peaks start again. [control]
  bool read(AAX_CTypeID id, float* value);

 private:
  static_assert(std::atomic<float>::is_always_lock_free);
  std::vector<float> field;
  std::vector<std::atomic<float>> published;
  std::vector<char> peak;
  std::unordered_map<AAX_CTypeID, std::size_t> place;
};

}  // namespace corvane::aaxhost
