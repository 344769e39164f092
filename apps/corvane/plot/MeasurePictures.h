#pragma once

#include <string>
#include <vector>

#include "corvane/measure/Measure.h"
#include "corvane/plot/Chart.h"

namespace corvane::plot {

// Charts of what corvane/measure tells, several settings over each other.

struct NamedResponse {
  std::string name;
  std::vector<cli::ResponsePoint> points;
};
/// Gain over frequency, and the phase below it where it is wanted.
std::vector<ChartPanel> responsePanels(const std::vector<NamedResponse>& curves, bool withPhase);

struct NamedDynamics {
  std::string name;
  std::vector<cli::DynamicsPoint> points;
  std::vector<cli::GainPoint> burst;  ///< empty for none
};
/// Level out over level in, and the gain round a burst below it where there is one.
std::vector<ChartPanel> dynamicsPanels(const std::vector<NamedDynamics>& curves);

struct NamedHarmonics {
  std::string name;
  std::vector<cli::Harmonic> harmonics;
};
/// Harmonics in dB of the tone.
std::vector<ChartPanel> harmonicsPanels(const std::vector<NamedHarmonics>& curves);

}  // namespace corvane::plot
