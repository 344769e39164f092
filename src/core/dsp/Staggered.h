#pragma once

namespace corvane {

/// Runs stages over frames 0 .. `count` - 1, each one frame behind the stage before it:
///
///   for every step i:  first(i), second(i - 1), third(i - 2), ...
///
/// What a stage hands on goes through an array by frame. So nothing in a step waits for anything else in it,
/// and a processor overlaps the long chains of one frame without having to look far ahead. `Stage`: void (int
/// frame).
template <typename... Stage>
inline void staggered(int count, Stage... stages) {
  constexpr int kFilling = sizeof...(Stage) - 1;  // steps in which some stages have no frame
  const auto edge = [&](int i) { ((i >= 0 && i < count ? stages(i) : void(), --i), ...); };
  int i = 0;
  for (; i < kFilling; ++i) edge(i);
  for (; i < count; ++i) {
    int frame = i;
    ((stages(frame), --frame), ...);
  }
  for (; i < count + kFilling; ++i) edge(i);
}

}  // namespace corvane
