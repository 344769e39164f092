#pragma once

#include <algorithm>
#include <type_traits>

namespace corvane {

/// Runs stages over frames 0 .. `count` - 1, each one frame behind the stage before it:
///
///   for every step i:  first(i), second(i - 1), third(i - 2), ...
///
/// What a stage hands on goes through an array by frame. So nothing in a step waits for anything else in it,
/// and a processor overlaps the long chains of one frame without having to look far ahead. `Stage`: void (int
/// frame). Inlined, so that it takes the instructions of its caller.
template <typename... Stage>
[[gnu::always_inline]] inline void staggered(int count, Stage... stages) {
  constexpr int kFilling = sizeof...(Stage) - 1;  // steps in which some stages have no frame
  const auto edge = [&](int i) __attribute__((always_inline)) {
    ((i >= 0 && i < count ? stages(i) : void(), --i), ...);
  };
  int i = 0;
  for (; i < kFilling; ++i) edge(i);
  for (; i < count; ++i) {
    int frame = i;
    ((stages(frame), --frame), ...);
  }
  for (; i < count + kFilling; ++i) edge(i);
}

/// As above, for stages with less to do at the frames `from` .. `to` - 1 than at the others. `Stage`: void
/// (int frame, std::bool_constant<inside>), with `inside` false for others, and for some of these at the
/// ends.
template <typename... Stage>
[[gnu::always_inline]] inline void staggered(int count, int from, int to, Stage... stages) {
  constexpr int kFilling = sizeof...(Stage) - 1;
  const auto edge = [&](int i) { ((i >= 0 && i < count ? stages(i, std::false_type{}) : void(), --i), ...); };
  int i = 0;
  for (const int inside = std::min(from, count) + kFilling; i < inside; ++i) edge(i);
  for (; i < to; ++i) {
    int frame = i;
    ((stages(frame, std::true_type{}), --frame), ...);
  }
  for (; i < count + kFilling; ++i) edge(i);
}

}  // namespace corvane
