#include "audition/Instruments.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <numbers>

namespace corvane::audition {

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr double kHighestPartialHz = 15000.0;
constexpr std::size_t kControlFrames = 64;  // amplitudes and pitches move in steps of 1.3 ms, joined by lines

/// Sum of sines. `amplitude(k, seconds)` of partial k = 1, 2, ..; `ratio(k)` of its frequency to the note's;
/// `bend(seconds)` multiplies all frequencies.
struct Partials {
  int count;
  std::function<double(int, double)> amplitude;
  std::function<double(int)> ratio = [](int k) { return static_cast<double>(k); };
  std::function<double(double)> bend = [](double) { return 1.0; };
};

Sound sung(const Note& note, const Partials& partials) {
  Sound out(frames(note.seconds), 0.0);
  for (int k = 1; k <= partials.count; ++k) {
    const double hz = note.hz * partials.ratio(k);
    if (hz > kHighestPartialHz) break;
    std::complex<double> turn = std::polar(1.0, 0.7 * k);  // phases apart, so that no needle stands out
    double level = partials.amplitude(k, 0.0);
    for (std::size_t n = 0; n < out.size(); n += kControlFrames) {
      const double seconds = static_cast<double>(n) / kRateHz;
      const double next = partials.amplitude(k, seconds + static_cast<double>(kControlFrames) / kRateHz);
      const double slope = (next - level) / kControlFrames;
      const auto step = std::polar(1.0, kTwoPi * hz * partials.bend(seconds) / kRateHz);
      for (std::size_t i = n; i < std::min(n + kControlFrames, out.size()); ++i) {
        out[i] += level * turn.imag();
        level += slope;
        turn = {turn.real() * step.real() - turn.imag() * step.imag(),
                turn.real() * step.imag() + turn.imag() * step.real()};
      }
      level = next;
    }
  }
  return out;
}

/// Rises within `attack` and falls within `release` before the end, seconds.
double swell(double seconds, double length, double attack, double release) {
  return std::clamp(seconds / attack, 0.0, 1.0) * std::clamp((length - seconds) / release, 0.0, 1.0);
}

/// Ends a note without a click.
Sound damped(Sound sound, double seconds = 0.03) {
  const std::size_t tail = std::min(frames(seconds), sound.size());
  for (std::size_t n = 0; n < tail; ++n)
    sound[sound.size() - 1 - n] *= static_cast<double>(n) / static_cast<double>(tail);
  return sound;
}

double vibrato(double seconds, double cents, double hz) {
  return std::exp2(cents / 1200.0 * std::clamp(2.0 * seconds - 0.2, 0.0, 1.0) *
                   std::sin(kTwoPi * hz * seconds));
}

struct PluckKind {
  double excitationHz;  ///< plectrum or finger: brightness of the pluck at full force
  double loss;          ///< share that the damping low-pass keeps of the way, 0..1; lower rings longer
  double decaySeconds;  ///< to -60 dB
  double position;      ///< of the pluck along the string, 0..1
};

PluckKind shapeOf(Pluck kind) {
  switch (kind) {
    case Pluck::bass: return {2500.0, 0.35, 4.0, 0.22};
    case Pluck::steel: return {9000.0, 0.12, 3.5, 0.13};
    case Pluck::nylon: return {3500.0, 0.30, 2.0, 0.19};
    case Pluck::electric: return {6000.0, 0.15, 4.0, 0.17};
  }
  return {};
}

}  // namespace

Sound plucked(Pluck kind, Note note, std::uint32_t seed) {
  const PluckKind shape = shapeOf(kind);
  const double period = kRateHz / note.hz - shape.loss;  // the damping filter delays by about its loss
  const auto whole = static_cast<std::size_t>(period);
  const double fraction = period - static_cast<double>(whole);
  Sound pluck = lowPassed(noise(period / kRateHz, seed), shape.excitationHz * (0.3 + 0.7 * note.force));
  const double keep = std::pow(10.0, -3.0 / (note.hz * shape.decaySeconds));
  Sound line(whole + 1, 0.0), out(frames(note.seconds));
  double last = 0.0;
  for (std::size_t n = 0; n < out.size(); ++n) {
    const double a = line[n % line.size()], b = line[(n + 1) % line.size()];
    const double arrived = a * fraction + b * (1.0 - fraction);
    last = (1.0 - shape.loss) * arrived + shape.loss * last;
    const double y = keep * last + (n < pluck.size() ? pluck[n] : 0.0);
    line[n % line.size()] = y;
    out[n] = y;
  }
  // Plucked at a point of the string: partials with a node there are missing.
  Sound shaped = out;
  mix(shaped, out, shape.position / note.hz, -1.0);
  scale(shaped, note.force);
  if (kind == Pluck::electric) shaped = lowPassed(shaped, 4500.0);  // a pickup and its cable
  return damped(std::move(shaped));
}

Sound synthBass(Note note) {
  return damped(sung(note, {40, [&](int k, double t) {
                              const double cutoff = note.hz * (2.0 + 14.0 * note.force * std::exp(-t / 0.15));
                              const double x = note.hz * k / cutoff;
                              return note.force * swell(t, note.seconds, 0.004, 0.03) / k / (1.0 + x * x);
                            }}));
}

Sound drumMachineKick(double force) {
  Sound out(frames(0.6));
  double phase = 0.0;
  for (std::size_t n = 0; n < out.size(); ++n) {
    const double t = static_cast<double>(n) / kRateHz;
    phase += kTwoPi * (48.0 + 130.0 * std::exp(-t / 0.02)) / kRateHz;
    out[n] = force * std::exp(-t / 0.18) * std::sin(phase);
  }
  mix(out, lowPassed(noise(0.004, 808), 5000.0), 0.0, 0.3 * force);
  return damped(std::move(out));
}

Sound piano(Note note, std::uint32_t seed) {
  const double stiffness = 4e-4;
  Partials partials{30, [&](int k, double t) {
                      const double bright = std::pow(k, -0.8 - 1.2 * (1.0 - note.force));
                      const double ring = (2.2 - note.hz / 900.0) / (1.0 + 0.25 * k);
                      const double decay = 0.7 * std::exp(-3.0 * t / ring) + 0.3 * std::exp(-t / ring);
                      return note.force * bright * decay * std::min(t / 0.002, 1.0);
                    }};
  partials.ratio = [=](int k) { return k * std::sqrt(1.0 + stiffness * k * k); };
  Sound out = sung(note, partials);
  Sound hammer = lowPassed(noise(0.02, seed), 2500.0);
  mix(out, damped(std::move(hammer), 0.018), 0.0, 0.25 * note.force * note.force);
  return damped(std::move(out), 0.06);
}

Sound electricPiano(Note note) {
  Sound out(frames(note.seconds));
  for (std::size_t n = 0; n < out.size(); ++n) {
    const double t = static_cast<double>(n) / kRateHz, turn = kTwoPi * note.hz * t;
    const double tine = 0.15 * note.force * std::exp(-t / 0.06) * std::sin(14.0 * turn);
    const double depth = 2.2 * note.force * std::exp(-t / 0.5);
    out[n] = note.force * std::exp(-t / 1.1) * std::sin(turn + depth * std::sin(turn) + tine) *
             std::min(t / 0.001, 1.0);
  }
  return damped(std::move(out), 0.05);
}

Sound organ(Note note) {
  static constexpr int kDrawbars[] = {1, 2, 3, 4, 6, 8};
  static constexpr double kPulled[] = {1.0, 0.9, 0.7, 0.5, 0.2, 0.3};
  Partials partials{6, [&](int k, double t) {
                      return 0.3 * kPulled[k - 1] * swell(t, note.seconds, 0.003, 0.01) *
                             (1.0 + 0.12 * std::sin(kTwoPi * 6.4 * t));
                    }};
  partials.ratio = [](int k) { return 0.5 * kDrawbars[k - 1]; };
  partials.bend = [](double t) { return 1.0 + 0.003 * std::sin(kTwoPi * 6.4 * t + 1.0); };
  Sound out = sung(note, partials);
  mix(out, highPassed(noise(0.003, 17), 1500.0), 0.0, 0.2);
  return out;
}

Sound synthLead(Note note) {
  const auto voice = [&](double cents) {
    return sung({note.hz * std::exp2(cents / 1200.0), note.seconds, note.force},
                {60, [&](int k, double t) {
                   const double x = note.hz * k / (600.0 + 5000.0 * note.force * std::exp(-t / 0.25));
                   return 0.5 * note.force * swell(t, note.seconds, 0.005, 0.05) / k / (1.0 + x * x);
                 }});
  };
  Sound out = voice(-5.0);
  mix(out, voice(6.0), 0.0);
  return out;
}

Sound synthPad(Note note) {
  const auto voice = [&](double cents) {
    return sung({note.hz * std::exp2(cents / 1200.0), note.seconds, note.force},
                {40, [&](int k, double t) {
                   const double x = note.hz * k / (900.0 + 700.0 * std::sin(kTwoPi * 0.2 * t));
                   return 0.3 * note.force * swell(t, note.seconds, 0.4, 0.4) / k / (1.0 + x * x);
                 }});
  };
  Sound out = voice(-9.0);
  mix(out, voice(0.0), 0.0);
  mix(out, voice(8.0), 0.0);
  return out;
}

Sound strings(Note note, std::uint32_t seed) {
  Sound out(frames(note.seconds), 0.0);
  Noise draw(seed);
  for (int desk = 0; desk < 6; ++desk) {
    const double cents = 9.0 * draw(), rate = 5.3 + 0.7 * draw(), attack = 0.09 + 0.04 * draw();
    Partials partials{36, [&](int k, double t) {
                        const double body = 1.0 + std::exp(-std::pow((note.hz * k - 500.0) / 250.0, 2)) +
                                            0.8 * std::exp(-std::pow((note.hz * k - 3000.0) / 1200.0, 2));
                        return 0.15 * note.force * body * std::pow(k, -1.4 + 0.4 * note.force) *
                               swell(t, note.seconds, attack, 0.15);
                      }};
    partials.bend = [=](double t) { return vibrato(t, 14.0, rate); };
    mix(out, sung({note.hz * std::exp2(cents / 1200.0), note.seconds, note.force}, partials), 0.0);
  }
  Sound bow = highPassed(noise(note.seconds, seed + 1), 1800.0);
  for (std::size_t n = 0; n < bow.size(); ++n)
    bow[n] *= swell(static_cast<double>(n) / kRateHz, note.seconds, 0.05, 0.15);
  mix(out, bow, 0.0, 0.015 * note.force);
  return out;
}

Sound brass(Note note, std::uint32_t seed) {
  Partials partials{36, [&](int k, double t) {
                      const double force = note.force * swell(t, note.seconds, 0.05, 0.08);
                      // The harder a lip is driven, the later the spectrum begins to fall.
                      const double x = note.hz * k / (500.0 + 2200.0 * force);
                      return 0.4 * force / (1.0 + x * x * x);
                    }};
  partials.bend = [](double t) { return vibrato(t, 10.0, 5.1) * (1.0 - 0.015 * std::exp(-t / 0.02)); };
  Sound out = sung(note, partials);
  Sound breath = highPassed(lowPassed(noise(0.08, seed), 3000.0), 300.0);
  mix(out, damped(std::move(breath), 0.06), 0.0, 0.12 * note.force);
  return damped(std::move(out));
}

Sound saxophone(Note note, std::uint32_t seed) {
  Partials partials{40, [&](int k, double t) {
                      const double force = note.force * swell(t, note.seconds, 0.03, 0.06);
                      const double hz = note.hz * k;
                      const double formants = 0.35 + std::exp(-std::pow((hz - 750.0) / 350.0, 2)) +
                                              0.6 * std::exp(-std::pow((hz - 1700.0) / 600.0, 2)) +
                                              0.3 * std::exp(-std::pow((hz - 3300.0) / 900.0, 2));
                      return 0.4 * force * formants * std::pow(k, -1.1 + 0.4 * force);
                    }};
  partials.bend = [](double t) { return vibrato(t, 18.0, 4.9); };
  Sound out = sung(note, partials);
  Sound breath = highPassed(noise(note.seconds, seed), 1200.0);
  for (std::size_t n = 0; n < breath.size(); ++n)
    breath[n] *= swell(static_cast<double>(n) / kRateHz, note.seconds, 0.02, 0.05);
  mix(out, breath, 0.0, 0.03 * note.force);
  return damped(std::move(out));
}

Sound triangle(Note note) {
  static constexpr double kModes[] = {1.0, 1.52, 2.04, 2.71, 3.36, 4.01, 5.22};
  Partials partials{7, [&](int k, double t) {
                      return 0.2 * note.force * std::exp(-t * (2.0 + 0.8 * k)) * std::min(t / 0.0005, 1.0);
                    }};
  partials.ratio = [](int k) { return kModes[k - 1]; };
  return damped(sung(note, partials));
}

Sound shaker(double seconds, std::uint32_t seed) {
  Sound out = highPassed(noise(seconds, seed), 4000.0);
  for (std::size_t n = 0; n < out.size(); ++n)
    out[n] *= swell(static_cast<double>(n) / kRateHz, seconds, 0.4 * seconds, 0.5 * seconds);
  return out;
}

Sound overdriven(const Sound& sound, double driveDb) {
  Sound out = highPassed(sound, 120.0);
  double peak = 0.0;
  for (const double x : out) peak = std::max(peak, std::abs(x));
  const double drive = fromDb(driveDb) / std::max(peak, 1e-9);
  for (double& x : out) x = std::tanh(drive * x + 0.15) - std::tanh(0.15);
  return highPassed(lowPassed(lowPassed(out, 4200.0), 5000.0), 80.0);
}

}  // namespace corvane::audition
