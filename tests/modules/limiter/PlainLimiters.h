#pragma once

#include <algorithm>
#include <cmath>

#include "core/dsp/Flush.h"
#include "modules/limiter/BrickWall.h"
#include "modules/limiter/OptoLimiter.h"
#include "modules/limiter/Saturator.h"
#include "modules/limiter/VcaLimiter.h"

// The limiters one sample at a time, with the C library's functions: what the block forms must give.
// `k`: key, `ci`: inverse of the ceiling; the result is the gain.

namespace corvane::limiter::plain {

inline double opto(double k, double ci, bool soft, const OptoCoefficients& c, OptoState& s) {
  const double v = 0.93 * std::abs(k);
  s.optoPeak = v > s.optoPeak ? v : s.optoPeak + (v - s.optoPeak) * c.optoPeakFall;
  const double x = ci * s.optoPeak + (soft ? 0.01 : 0.05);
  const double d = x - s.optoMemory;
  if (d > 0.0) s.optoMemory += d * c.optoAttack;
  if (d < 0.0) {
    const double m = (soft ? x * 0.999 + 0.001 : x * 0.5 + 0.5) - s.optoMemory;
    const double bright = 0.25 * 0.145 * std::atan(4.0 * std::pow(m, 4.0) * c.optoFall);
    s.optoMemory -= std::min(0.0333 * -d, bright);
  }
  s.optoMemory = std::max(s.optoMemory, 0.001);
  s.optoHold =
      s.optoMemory > s.optoHold ? s.optoMemory : s.optoHold + (s.optoMemory - s.optoHold) * c.optoPeakFall;
  s.optoFollow += (s.optoHold - s.optoFollow) * (s.optoHold > s.optoFollow ? c.riseFast : c.fallFast);
  s.optoFollow = flushed(s.optoFollow, 1e-15);
  const double y = s.optoFollow + 1e-6;
  return soft ? std::tanh(y) / y : y > 1.0 ? 1.0 / y : 1.0;
}

inline double vca(double k, double ci, bool soft, const VcaCoefficients& c, VcaState& s) {
  const double l = std::log10(ci * std::abs(k) + 0.0001);
  s.vcaFloor += ((soft ? -1.2999999523162842 : -0.800000011920929) - s.vcaFloor) * c.vcaFall;
  if (l > s.vcaFloor) s.vcaFloor += (l - s.vcaFloor) * c.vcaAttack;
  s.vcaHold = s.vcaFloor > s.vcaHold ? s.vcaFloor : s.vcaHold + (s.vcaFloor - s.vcaHold) * c.vcaSmooth;
  const double level = std::pow(10.0, s.vcaHold), y = level + 1e-6;
  if (soft) return level > 1e-5 ? std::tanh(level) / level : 1.0;
  return y >= 1.0 ? 1.0 / y : 1.0;
}

inline double brickWall(double k, double ci, int mode, bool soft, const BrickWallCoefficients& c,
                        BrickWallState& s) {
  const double v = std::abs(k) * ci + 0.01;
  const auto chase = [](double above, double& stage, double share) {
    stage = above > stage ? above : stage + (above - stage) * share;
  };
  double level = 0.0;
  if (mode == 0) {
    chase(v, s.brickFast, c.fastFall);
    const double d = s.brickStage1 - s.brickFast;
    s.brickStage1 = d < 0.0 ? s.brickFast : s.brickStage1 - std::min(0.25 * d, d * d * c.slow1);
    level = s.brickStage1;
  } else {
    s.brickFast += (0.1 - s.brickFast) * (mode == 1 ? c.fastFall : c.slow3);
    s.brickFast = std::max(s.brickFast, v);
    chase(s.brickFast, s.brickStage1, mode == 1 ? c.slow2 : c.slow3);
    level = s.brickStage1;
    if (mode == 2) {
      chase(s.brickStage1, s.brickStage2, c.slow3);
      chase(s.brickStage2, s.brickStage3, c.slow3);
      level = s.brickStage3;
    }
  }
  const double x = level + 1e-6, y = 1.255 * x;
  return soft ? std::sqrt(std::atan(y * y)) / y : x >= 1.0 ? 1.0 / x : 1.0;
}

inline double saturatorLaw(int shape, double v) {
  if (shape == 0) return 1.0 / (0.33 * std::sqrt(v) + 1.0);
  if (shape == 1) return 1.0 / (0.33 * v + 1.0);
  if (v <= 1e-8) return 1.0;
  if (shape == 2) return std::atan(v) / v;
  if (shape == 3) return std::tanh(v) / v;
  if (shape == 4) return std::sqrt(std::tanh(v * v)) / v;
  return std::sqrt(std::sqrt(std::tanh(std::pow(v, 4.0)))) / v;
}

inline double saturator(double k, double ci, int shape, bool soft, const SaturatorCoefficients& c,
                        SaturatorState& s) {
  const double share = soft ? c.satCoefSoft : c.satCoefHard;
  const auto step = [share](double& stage, double goal) {
    stage = flushed(stage + (goal - stage) * share, 1e-19);
  };
  step(s.satStage1, std::abs(k) * ci);
  if (soft) return saturatorLaw(shape, s.satStage1);
  step(s.satStage2, s.satStage1);
  step(s.satStage3, s.satStage2);
  return saturatorLaw(shape, s.satStage3);
}

}  // namespace corvane::limiter::plain
