#include "corvane/DemoCommand.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <vector>

#include "corvane/Failure.h"
#include "corvane/MeterFiles.h"
#include "corvane/Render.h"
#include "corvane/RenderCommand.h"
#include "corvane/Words.h"
#include "corvane/plot/LevelsPicture.h"

namespace corvane::cli {

namespace fs = std::filesystem;

namespace {

constexpr int kDemoBlockFrames = 64;  // a meter reading each 1.3 ms draws a smooth curve

struct DemoSetting {
  const char* file;
  const char* title;
  const char* words;  ///< below the title
  std::vector<std::string> sets;
};

/// Three of compressor and master alone, so that the figures are theirs, and one of a whole chain.
const std::vector<DemoSetting>& demoSettings() {
  static const std::vector<std::string> kOthersOut{"Pre:Type=-", "Flt:Type=-", "EQ:Type=-",
                                                   "Mstr:Type=Master Control"};
  static const std::vector<DemoSetting> settings = [] {
    std::vector<DemoSetting> made{
        {"opto-level",
         "Opto Clamper: level the words",
         "threshold -22 dB, ratio 2:1, attack 10 ms, release 150 ms, makeup 4 dB, master 0 dB",
         {"Comp:Type=Opto Clamper", "Comp:Threshold=-22", "Comp:Ratio=2", "Comp:Attack=10",
          "Comp:Release=150", "Comp:Makeup Gain=4", "Mstr:Gain=0"}},
        {"fet-close",
         "FET Clamper: close to the microphone",
         "threshold -24 dB, ratio 4:1, attack 0.3 ms, release 50 ms, makeup 10 dB, master -1 dB",
         {"Comp:Type=FET Clamper", "Comp:Threshold=-24", "Comp:Ratio=4", "Comp:Attack=0.3", "Comp:Release=50",
          "Comp:Makeup Gain=10", "Mstr:Gain=-1"}},
        {"vca-peaks",
         "VCA Clamper: hold the peaks, keep the breath",
         "threshold -15 dB, ratio 4:1, attack 1 ms, release 80 ms, makeup 3 dB, master 0 dB",
         {"Comp:Type=VCA Clamper", "Comp:Threshold=-15", "Comp:Ratio=4", "Comp:Attack=1", "Comp:Release=80",
          "Comp:Makeup Gain=3", "Mstr:Gain=0"}},
    };
    for (DemoSetting& setting : made)
      setting.sets.insert(setting.sets.begin(), kOthersOut.begin(), kOthersOut.end());
    made.push_back({"full-chain",
                    "A whole chain: preamp to master, de-esser behind the equaliser",
                    "Pre 60s, high-pass, gate, opto, Lumenband, de-esser, BrickWall, master",
                    {"Pre:Type=Pre 60s",   "Pre:Drive=4",        "Flt:Type=Basic Filters",
                     "Flt:HPF Freq=90",    "Gate:Type=Expander", "Gate:Threshold=-45",
                     "Gate:Range=-12",     "Gate:Release=120",   "Comp:Type=Opto Clamper",
                     "Comp:Threshold=-24", "Comp:Ratio=3",       "Comp:Attack=5",
                     "Comp:Release=120",   "Comp:Makeup Gain=8", "EQ:Type=Lumenband",
                     "EQ:LM Freq=350",     "EQ:LM Gain=-2.5",    "EQ:HM Freq=3k5",
                     "EQ:HM Gain=2.5",     "EQ:HI Freq=12k",     "EQ:HI Gain=3",
                     "Lim:Type=BrickWall", "Lim:Ceiling=-3",     "Mstr:Type=Master Control",
                     "Mstr:Gain=-1",       "InsX:Type=De-esser", "InsX:Position=F"}});
    return made;
  }();
  return settings;
}

void printRow(const DemoSetting& setting, const RenderReport& report, const fs::path& sound,
              Console& console) {
  console.print("{:<12} {:>8} {:>8} {:>9} {:>8} {:>10.1f}   {}\n", setting.file,
                decibels(report.input.peak, 1), decibels(report.input.rms(), 1),
                decibels(report.output.peak, 1), decibels(report.output.rms(), 1),
                reductionDb(report.largestReduction), printable(sound));
}

void renderOne(const DemoSetting& setting, const DemoOptions& options, Console& console) {
  RenderPlan plan;
  plan.blockFrames = kDemoBlockFrames;
  const fs::path sound = fs::path(options.outputFolder) / (std::string(setting.file) + ".wav");
  const fs::path picture = fs::path(sound).replace_extension(".png");
  plot::LevelTrace trace;
  StripRunner strip;
  applyArguments(strip, setting.sets, {});
  StripMaker maker(std::move(strip));
  FileRender render(plan, maker, options.input);
  const RenderReport report = render.run(
      sound, [&](const ChannelBlock& block) { trace.add(block); }, nullptr);
  const std::string subtitle = fmt::format("{}   {} Hz   {}", fs::path(options.input).filename().string(),
                                           report.rateHz, setting.words);
  plot::drawLevels(trace, report, {setting.title, subtitle}, picture);
  printRow(setting, report, sound, console);
}

constexpr const char* kExamples = R"(Examples:
  corvane demo
  corvane demo my-voice.wav --out-dir my-demo)";

}  // namespace

void addDemoCommand(CLI::App& app, DemoOptions& o) {
  CLI::App* demo =
      app.add_subcommand("demo", "Renders a voice through four settings and draws what happened");
  demo->add_option("IN", o.input, "A voice (" + o.input + ")");
  demo->add_option("--out-dir", o.outputFolder, "Folder for sounds and pictures (demo)")->type_name("DIR");
  demo->footer(kExamples);
}

int runDemo(const DemoOptions& options, Console& console) {
  makeFolder(options.outputFolder);
  console.print("{:<12} {:>17} {:>18} {:>10}\n", "", "input, dBFS", "output, dBFS", "reduction");
  console.print("{:<12} {:>8} {:>8} {:>9} {:>8} {:>10}\n", "setting", "peak", "RMS", "peak", "RMS",
                "largest, dB");
  for (const DemoSetting& setting : demoSettings()) renderOne(setting, options, console);
  console.print("\nBeside each sound stands its picture, {}/*.png\n", printable(options.outputFolder));
  return kDone;
}

}  // namespace corvane::cli
