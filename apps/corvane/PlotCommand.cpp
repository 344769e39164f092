#include "corvane/PlotCommand.h"

#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <nlohmann/json.hpp>

#include "core/StripEffect.h"
#include "corvane/NumberRange.h"
#include "corvane/Presets.h"
#include "corvane/measure/Measure.h"
#include "corvane/plot/Canvas.h"
#include "corvane/plot/MeasurePictures.h"

namespace corvane::cli {

namespace {

using nlohmann::ordered_json;

constexpr double kLowestLevelDb = -90.0, kHighestLevelDb = 20.0;
constexpr std::size_t kMostCompared = 5, kLongestTitle = 70;

struct KindWords {
  PlotKind kind;
  const char* name;
  const char* help;
  const char* examples;
};

constexpr KindWords kKinds[] = {
    {PlotKind::response, "response", "Gain over frequency, from a sine that sweeps from 20 Hz to 20 kHz",
     R"(Examples:
  corvane plot response --set EQ:Type=Lumenband --set "EQ:HM Gain=4" -o eq.png
  corvane plot response --preset "HiFi Vocal" --compare "Lead Vocal" --level -24 -o vocals.svg
  corvane plot response --preset 3 --csv)"},
    {PlotKind::dynamics, "dynamics", "Level out over level in, from a tone in steps of 1 dB",
     R"(Examples:
  corvane plot dynamics --set "Comp:Type=VCA Clamper" --set Comp:Threshold=-24 -o vca.png
  corvane plot dynamics --preset "HiFi Vocal" --burst -o vocal.png)"},
    {PlotKind::harmonics, "harmonics", "Harmonics of a tone, beside the tone itself",
     R"(Examples:
  corvane plot harmonics --set "Pre:Type=Pre 60s" --set Pre:Drive=6 -o warm.png
  corvane plot harmonics --preset "HiFi Vocal" --tone 110 --level -6 --json)"},
};

/// A setting to measure, as often as wanted, and what to call it.
struct Subject {
  std::string name;
  StripMaker strips;
};

std::string startName(const StartOptions& start) {
  if (!start.preset.empty()) return loadPreset(start.preset).listed.name;
  if (!start.state.empty()) return std::filesystem::path(start.state).filename().string();
  return "Default";
}

/// The name of the start, and the edits where they have room.
std::string titleFrom(const StartOptions& start) {
  std::vector<std::string> changes = start.sets;
  changes.insert(changes.end(), start.raws.begin(), start.raws.end());
  std::string name = startName(start);
  if (changes.empty()) return name;
  const std::string all = fmt::format("{}: {}", name, fmt::join(changes, ", "));
  return all.size() <= kLongestTitle ? all : fmt::format("{}, {} changes", name, changes.size());
}

std::vector<Subject> subjectsFrom(const PlotOptions& options) {
  std::vector<Subject> subjects;
  const bool changed = !options.start.sets.empty() || !options.start.raws.empty();
  subjects.push_back(
      {startName(options.start) + (changed ? " (changed)" : ""), StripMaker(startFrom(options.start))});
  for (const std::string& preset : options.compared)
    withArgument("--compare", preset, [&] {
      const LoadedPreset loaded = loadPreset(preset);
      StripRunner strip;
      strip.load(loaded.setting, loaded.listed.name);
      subjects.push_back({loaded.listed.name, StripMaker(std::move(strip))});
    });
  return subjects;
}

/// A minus as wide as a digit before each number below 0.
std::string withMinuses(std::string text) {
  for (std::size_t at = 0; (at = text.find(" -", at)) != text.npos; ++at) text.replace(at, 2, " \u2212");
  return text;
}

/// Digits enough for a picture, few enough for a person.
double shown(double value) { return std::round(value * 1e4) / 1e4 + 0.0; }  // no -0

/// Rows of numbers, each with its curve's name in front, printed as CSV or JSON.
class Numbers {
 public:
  explicit Numbers(std::vector<const char*> columnNames) : columns(std::move(columnNames)) {}
  void add(const std::string& curve, std::initializer_list<double> row) {
    ordered_json point;
    std::string line = quoted(curve);
    auto column = columns.begin();
    for (const double value : row) {
      point[*column++] = shown(value);
      line += fmt::format(",{}", shown(value));
    }
    csv += line + "\n";
    if (curves.empty() || curves.back()["name"] != curve)
      curves.push_back({{"name", curve}, {"points", ordered_json::array()}});
    curves.back()["points"].push_back(point);
  }
  std::string asCsv() const { return fmt::format("curve,{}\n{}", fmt::join(columns, ","), csv); }
  const ordered_json& asJson() const { return curves; }

 private:
  static std::string quoted(std::string text) {
    for (std::size_t at = 0; (at = text.find('"', at)) != text.npos; at += 2) text.insert(at, 1, '"');
    return '"' + text + '"';
  }

  std::vector<const char*> columns;
  std::string csv;
  ordered_json curves = ordered_json::array();
};

struct Measured {
  Numbers numbers;
  std::vector<plot::ChartPanel> panels;
  std::string about;  ///< what was measured, and how
};

Measured response(const PlotOptions& options, std::vector<Subject>& subjects) {
  Numbers numbers({"hz", "gain_db", "phase_degrees"});
  std::vector<plot::NamedResponse> curves;
  for (Subject& subject : subjects) {
    StripRunner strip = subject.strips.make(options.rateHz);
    curves.push_back({subject.name, measureResponse(strip, options.rateHz, options.levelDb)});
    for (const auto& point : curves.back().points)
      numbers.add(subject.name, {point.hz, point.gainDb, point.phaseDegrees});
  }
  return {numbers, plot::responsePanels(curves, options.phase),
          fmt::format("frequency response, a sweep at {} dBFS, {} Hz", options.levelDb, options.rateHz)};
}

Measured dynamics(const PlotOptions& options, std::vector<Subject>& subjects) {
  Numbers numbers =
      options.burst ? Numbers({"milliseconds", "input_db", "gain_db"}) : Numbers({"input_db", "output_db"});
  std::vector<plot::NamedDynamics> curves;
  for (Subject& subject : subjects) {
    plot::NamedDynamics curve{subject.name, {}, {}};
    StripRunner strip = subject.strips.make(options.rateHz);
    curve.points = measureDynamics(strip, options.rateHz, options.toneHz);
    if (options.burst) {
      StripRunner fresh = subject.strips.make(options.rateHz);
      curve.burst = measureBurst(fresh, options.rateHz, options.toneHz);
      for (const auto& point : curve.burst)
        numbers.add(subject.name, {point.milliseconds, point.inputDb, point.gainDb});
    } else {
      for (const auto& point : curve.points) numbers.add(subject.name, {point.inputDb, point.outputDb});
    }
    curves.push_back(std::move(curve));
  }
  return {numbers, plot::dynamicsPanels(curves),
          fmt::format("level out over level in, dBFS, a tone of {} Hz{}, {} Hz",
                      shown(measuredToneHz(options.rateHz, options.toneHz)),
                      options.burst ? fmt::format("; below, {} ms from {} to {} dBFS", kBurstMs,
                                                  kBurstQuietDb, kBurstLoudDb)
                                    : "",
                      options.rateHz)};
}

Measured harmonics(const PlotOptions& options, std::vector<Subject>& subjects) {
  Numbers numbers({"order", "hz", "level_db"});
  std::vector<plot::NamedHarmonics> curves;
  for (Subject& subject : subjects) {
    StripRunner strip = subject.strips.make(options.rateHz);
    curves.push_back(
        {subject.name, measureHarmonics(strip, options.rateHz, options.toneHz, options.levelDb)});
    for (const auto& harmonic : curves.back().harmonics)
      numbers.add(subject.name, {static_cast<double>(harmonic.order), harmonic.hz, harmonic.levelDb});
  }
  return {numbers, plot::harmonicsPanels(curves),
          fmt::format("harmonics of {} Hz at {} dBFS, in dB of the tone, {} Hz",
                      shown(curves.front().harmonics.front().hz), options.levelDb, options.rateHz)};
}

Measured measured(const PlotOptions& options, std::vector<Subject>& subjects) {
  switch (options.kind) {
    case PlotKind::response: return response(options, subjects);
    case PlotKind::dynamics: return dynamics(options, subjects);
    default: return harmonics(options, subjects);
  }
}

}  // namespace

void addPlotCommand(CLI::App& app, PlotOptions& o) {
  CLI::App* plot = app.add_subcommand("plot", "Measures what a setting does to tones, and draws it");
  plot->require_subcommand(1);
  plot->footer(kKinds[0].examples);
  for (const KindWords& words : kKinds) {
    CLI::App* command = plot->add_subcommand(words.name, words.help);
    command->parse_complete_callback([&o, kind = words.kind] { o.kind = kind; });
    command->add_option("-o,--output", o.output, "Picture to write")->type_name("FILE.png|svg");
    addStartOptions(*command, o.start);
    command->add_option("--compare", o.compared, "A further preset in the same picture; may be repeated")
        ->type_name("PRESET")
        ->expected(1)
        ->take_all();
    addNumber(*command, "--rate", o.rateHz, kLowestRateHz, kHighestRateHz, "Sample rate in Hz")
        ->type_name("HZ");
    if (words.kind != PlotKind::dynamics)
      addNumber(*command, "--level", o.levelDb, kLowestLevelDb, kHighestLevelDb, "Peak of the sine, dBFS")
          ->type_name("DB");
    if (words.kind != PlotKind::response)
      addNumber(*command, "--tone", o.toneHz, kLowestShownHz, kHighestShownHz, "Frequency of the tone in Hz")
          ->type_name("HZ");
    if (words.kind == PlotKind::response) command->add_flag("--phase", o.phase, "The phase as well");
    if (words.kind == PlotKind::dynamics)
      command->add_flag("--burst", o.burst, "Also the gain over time round a burst, for attack and release");
    command->add_option("--title", o.title, "Words at the head of the picture (the setting's)")
        ->type_name("TEXT");
    command->add_option("--size", o.size, "Pixels of the picture (1920x1200, as SVG 960x600)")
        ->type_name("WIDTHxHEIGHT");
    command->add_flag("--json", o.json, "Prints the numbers as JSON");
    command->add_flag("--csv", o.csv, "Prints the numbers as CSV")->excludes("--json");
    command->footer(words.examples);
  }
}

int runPlot(const PlotOptions& options, Console& console) {
  if (options.output.empty() && !options.json && !options.csv)
    refuse("plot needs one of -o FILE, --json and --csv");
  if (!options.output.empty()) plot::isVectorName(options.output);
  std::optional<plot::PictureSize> size;
  if (!options.size.empty())
    withArgument("--size", options.size, [&] { size = plot::pictureSizeFrom(options.size); });
  if (options.compared.size() > kMostCompared)
    refuse("--compare: at most {} presets fit into one picture, {} are given", kMostCompared,
           options.compared.size());
  std::vector<Subject> subjects = subjectsFrom(options);
  const Measured result = measured(options, subjects);
  if (!options.output.empty()) {
    const std::string title =
        !options.title.empty() ? options.title
        : subjects.size() == 1 ? titleFrom(options.start)
                               : fmt::format("{} and {} more", titleFrom(options.start), subjects.size() - 1);
    plot::drawChart({title, withMinuses(result.about)}, result.panels, options.output, size);
  }
  if (options.csv) console.print("{}", result.numbers.asCsv());
  if (options.json) {
    const ordered_json whole = {{"measured", result.about}, {"curves", result.numbers.asJson()}};
    console.print("{}\n", whole.dump(2, ' ', false, ordered_json::error_handler_t::replace));
  }
  return kDone;
}

}  // namespace corvane::cli
