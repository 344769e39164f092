#include "corvane/RenderCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

#include "core/StripEffect.h"
#include "corvane/Failure.h"
#include "corvane/Interrupt.h"
#include "corvane/MeterFiles.h"
#include "corvane/NumberRange.h"
#include "corvane/ParameterNames.h"
#include "corvane/Presets.h"
#include "corvane/Progress.h"
#include "corvane/Render.h"
#include "corvane/StateFile.h"
#include "corvane/Words.h"
#include "corvane/plot/Canvas.h"
#include "corvane/plot/LevelsPicture.h"

namespace corvane::cli {

namespace fs = std::filesystem;

namespace {

constexpr int kMostJobs = 256;
constexpr int kLongestTailSeconds = 3600;

struct Job {
  fs::path input, output;
  std::exception_ptr failure{};
  RenderReport report{};
  nlohmann::ordered_json meters{};
};

BypassSpan bypassFrom(const std::string& argument) {
  const auto colon = argument.find(':');
  const std::string_view whole = argument;
  const auto from = numberOf(whole.substr(0, colon));
  const auto to = colon == argument.npos ? std::numeric_limits<double>::infinity()
                                         : numberOf(whole.substr(colon + 1)).value_or(-1.0);
  if (!from || *from < 0.0 || to <= *from)
    refuse("--bypass {}: must be FROM or FROM:TO in seconds, FROM 0 or more and TO later", argument);
  return {*from, to};
}

RenderPlan planFrom(const RenderOptions& options, const Setting& setting) {
  RenderPlan plan;
  for (const auto& bypass : options.bypasses) plan.bypasses.push_back(bypassFrom(bypass));
  const auto format = outputFormatOf(options.format);
  if (!format) refuse("--format {}: must be float, pcm16, pcm24 or flac", options.format);
  plan.format = *format;
  plan.blockFrames = options.blockFrames;
  plan.tailSeconds = options.tailSeconds;
  if (!options.key.empty()) plan.key = options.key;
  if (!options.automation.empty())
    plan.automation = readAutomation(options.automation,
                                     [&](std::string_view name) { return parameterFromName(name, setting); });
  return plan;
}

/// What stands on the picture, and its size. A wrong name or size is told before the work.
struct PicturePlan {
  std::string title;  ///< empty: the input's name
  std::optional<plot::PictureSize> size;
};

PicturePlan pictureFrom(const RenderOptions& options) {
  PicturePlan plan;
  if (options.picture.empty()) return plan;
  plot::isVectorName(options.picture);
  plan.title = options.pictureTitle;
  if (plan.title.empty() && !options.start.preset.empty())
    plan.title = loadPreset(options.start.preset).listed.name;
  if (!options.pictureSize.empty())
    withArgument("--picture-size", options.pictureSize,
                 [&] { plan.size = plot::pictureSizeFrom(options.pictureSize); });
  return plan;
}

fs::path outputIn(const fs::path& folder, const fs::path& input, OutputFormat format) {
  fs::path name = input.filename();
  return folder / name.replace_extension(extensionOf(format));
}

std::vector<Job> jobsFrom(const RenderOptions& options, OutputFormat format) {
  if (options.output.empty() == options.outputFolder.empty())
    refuse("render needs one of -o FILE and --out-dir FOLDER");
  if (options.inputs.size() > 1 && !options.output.empty())
    refuse("-o {}: takes one input, {} are given; use --out-dir", options.output, options.inputs.size());
  for (const auto& [option, file] :
       {std::pair{"--meter-log", options.meterLog}, std::pair{"--picture", options.picture}})
    if (options.inputs.size() > 1 && !file.empty())
      refuse("{} {}: takes one input, {} are given", option, file, options.inputs.size());
  std::vector<Job> jobs;
  std::map<fs::path, fs::path> writers;
  for (const fs::path input : options.inputs) {
    fs::path output = options.output;
    if (output.empty()) {
      output = outputIn(options.outputFolder, input, format);
      const auto [other, isNew] = writers.emplace(output, input);
      if (!isNew)
        refuse("--out-dir {}: {} and {} would both become {}", options.outputFolder, printable(other->second),
               printable(input), printable(output.filename()));
      std::error_code error;
      if (fs::equivalent(output, input, error))
        refuse("--out-dir {}: would overwrite the input {}; name it with -o if that is meant",
               options.outputFolder, printable(input));
    }
    jobs.push_back({.input = input, .output = output});
  }
  return jobs;
}

/// Files beside the sound; two outputs under one name would leave the later one alone.
void refuseSharedOutputs(const RenderOptions& options, const std::vector<Job>& jobs) {
  std::map<fs::path, std::string> writers;
  const auto claim = [&](const std::string& option, const fs::path& file) {
    if (file.empty()) return;
    const auto [other, isNew] = writers.emplace(fs::absolute(file).lexically_normal(), option);
    if (!isNew) refuse("{} {}: {} writes this file as well", option, printable(file), other->second);
  };
  for (const Job& job : jobs) claim(options.output.empty() ? "--out-dir" : "-o", job.output);
  claim("--meters", options.meters);
  claim("--meter-log", options.meterLog);
  claim("--picture", options.picture);
  claim("--save-preset", options.savePreset.empty() ? "" : presetFileName(options.savePreset));
  claim("--save-state", options.saveState);
}

std::string levelText(double gain) { return decibels(gain, 1) + " dBFS"; }

void tell(const Job& job, Console& console) {
  const RenderReport& report = job.report;
  console.print("{} -> {}  {} ch, {} Hz, {:.2f} s  peak {} -> {}  rms {} -> {}  reduction {:.1f} dB\n",
                printable(job.input), printable(job.output), report.channels, report.rateHz,
                static_cast<double>(report.frames) / report.rateHz, decibels(report.input.peak, 1),
                levelText(report.output.peak), decibels(report.input.rms(), 1),
                levelText(report.output.rms()), reductionDb(report.largestReduction));
  if (report.clippedSamples > 0)
    console.note("{}: {} samples were above full scale and hold there; --format float keeps them",
                 printable(job.output), report.clippedSamples);
}

void noteClampedRate(const Job& job, double rateHz, Console& console) {
  const double clamped = clampedRate(rateHz);
  if (clamped != rateHz)
    console.note("{}: {} Hz is outside {} to {} Hz; the strip works as if at {} Hz", printable(job.input),
                 rateHz, kLowestRateHz, kHighestRateHz, clamped);
}

/// All jobs, several at a time. Strips are made in the order of the inputs, whoever is ready first.
class Batch {
 public:
  Batch(const RenderPlan& renderPlan, const PicturePlan& picturePlan, const RenderOptions& renderOptions,
        StripMaker& strips, std::vector<Job>& batchJobs, Console& batchConsole)
      : plan(renderPlan),
        picture(picturePlan),
        options(renderOptions),
        maker(strips),
        jobs(batchJobs),
        console(batchConsole),
        progress(console) {}

  void run(std::size_t workers) {
    std::vector<std::jthread> others;
    for (std::size_t k = 1; k < workers; ++k) others.emplace_back([this] { work(); });
    work();
  }

 private:
  void work() {
    for (;;) {
      Job* job = nullptr;
      std::optional<FileRender> render;
      {
        const std::lock_guard ticket(construction);
        if (next == jobs.size() || interruptSignal() != 0) return;
        job = &jobs[next++];
        guarded(*job, [&] { render.emplace(plan, maker, job->input); });
      }
      if (render) guarded(*job, [&] { finish(*job, *render); });
    }
  }

  template <typename Step>
  void guarded(Job& job, Step step) {
    try {
      step();
    } catch (const Failure& failure) {
      job.failure = std::current_exception();
      console.error(failure.what());
    } catch (const Interrupted&) {
      job.failure = std::current_exception();
    } catch (const std::exception& problem) {  // no memory, a file system's own words
      job.failure = std::current_exception();
      console.error(fmt::format("cannot render {}: {}", printable(job.input), problem.what()));
    }
  }

  void finish(Job& job, FileRender& render) {
    noteClampedRate(job, render.rateHz(), console);
    progress.expect(render.promisedFrames());
    std::optional<MeterLog> log;
    if (!options.meterLog.empty()) log.emplace(options.meterLog);
    std::optional<plot::LevelTrace> trace;
    if (!options.picture.empty()) trace.emplace();
    const BlockListener listener = [&](const ChannelBlock& block) {
      if (log) log->add(block);
      if (trace) trace->add(block);
    };
    job.report = render.run(job.output, listener, [&](std::int64_t frames) { progress.advance(frames); });
    if (log) log->commit();
    if (trace) {
      const std::string name = job.input.filename().string();
      const std::string details =
          fmt::format("{}{}, {} Hz", picture.title.empty() ? "" : name + ", ",
                      job.report.channels == 1 ? "mono" : fmt::format("{} channels", job.report.channels),
                      job.report.rateHz);
      const plot::Caption caption{picture.title.empty() ? name : picture.title, details};
      plot::drawLevels(*trace, job.report, caption, options.picture, picture.size);
    }
    if (!options.meters.empty()) job.meters = meterReadings(render.strips());
    if (!options.quiet) tell(job, console);
  }

  const RenderPlan& plan;
  const PicturePlan& picture;
  const RenderOptions& options;
  StripMaker& maker;
  std::vector<Job>& jobs;
  Console& console;
  Progress progress;
  std::mutex construction;
  std::size_t next = 0;
};

void writeMeters(const std::string& path, const std::vector<Job>& jobs) {
  auto files = nlohmann::ordered_json::array();
  for (const Job& job : jobs)
    if (!job.failure)
      files.push_back({{"input", job.input.string()},
                       {"output", job.output.string()},
                       {"rate", job.report.rateHz},
                       {"frames", job.report.frames},
                       {"channels", job.meters}});
  const nlohmann::ordered_json whole = {{"files", files}};
  // names of files may be any bytes, JSON is UTF-8
  writeFile(path, whole.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

constexpr const char* kExamples = R"(Examples:
  corvane render voice.wav -o out.wav --set Comp:Threshold=-24 --set "Comp:Type=Opto Clamper"
  corvane render voice.wav -o out.wav --set "InsX:Type=De-esser" --set InsX:Position=A
  corvane render voice.wav -o out.wav --preset "HiFi Vocal" --set Mstr:Gain=-3
  corvane render voice.wav -o out.wav --set EQ:Type=Lumenband --save-state take1.state
  corvane render drums.wav -o out.wav --key kick.wav --set "Comp:Side Chain=Ext AUX"
  corvane render takes/*.wav --out-dir mixed --format pcm24 --jobs 4

Names are those of `corvane params`; ids do as well. Modules in an insert also go by their own words, as in
InsX:Threshold. Every channel of a file runs through a strip of its own.)";

}  // namespace

void makeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error && !fs::is_directory(folder))
    fail("cannot make the folder {}: {}", printable(folder), error.message());
}

void addRenderCommand(CLI::App& app, RenderOptions& o) {
  CLI::App* render = app.add_subcommand("render", "Renders audio files through the strip");
  render->add_option("IN", o.inputs, "Audio files, any that libsndfile reads")->required();
  render->add_option("-o,--output", o.output, "File to write")->type_name("OUT");
  render->add_option("--out-dir", o.outputFolder, "Folder to write to, under the names of the inputs")
      ->type_name("DIR");
  addStartOptions(*render, o.start);
  render
      ->add_option("--automation", o.automation,
                   "CSV rows seconds,name-or-id,normalised; a change lands on the first block boundary at or "
                   "after its time")
      ->type_name("FILE.csv");
  render
      ->add_option("--key", o.key, "Side chain: a file of the same rate, one channel or as many as the input")
      ->type_name("FILE");
  render->add_option("--block", o.blockFrames, "Frames that the strip is given at a time (512)")
      ->type_name("N")
      ->check(within(1, kLargestBlockFrames));
  render
      ->add_option("--bypass", o.bypasses,
                   "The host's bypass, in seconds, at block boundaries; may be repeated")
      ->type_name("FROM[:TO]")
      ->expected(1)
      ->take_all();
  addNumber(*render, "--tail", o.tailSeconds, 0, kLongestTailSeconds,
            "Silence behind the end, so that releases close")
      ->type_name("SECONDS");
  render->add_option("--format", o.format, "float, pcm16, pcm24 (WAV) or flac (float)")->type_name("FORMAT");
  render->add_option("--meters", o.meters, "Writes every meter after the last block")->type_name("FILE.json");
  render->add_option("--meter-log", o.meterLog, "Writes levels and reductions of every block")
      ->type_name("FILE.csv");
  render->add_option("--picture", o.picture, "Draws waveforms and gain reduction over time")
      ->type_name("FILE.png|svg");
  render
      ->add_option("--picture-title", o.pictureTitle,
                   "Words at the head of the picture (the preset's name, else the input's)")
      ->type_name("TEXT");
  render->add_option("--picture-size", o.pictureSize, "Pixels of the picture (1920x1200, as SVG 960x600)")
      ->type_name("WIDTHxHEIGHT");
  render->add_option("--save-preset", o.savePreset, "Writes the setting as a preset, once all is rendered")
      ->type_name("FILE.qdx");
  render
      ->add_option("--save-state", o.saveState,
                   "Writes the state that a session would hold, once all is rendered")
      ->type_name("FILE");
  render->add_option("--jobs", o.jobs, "Files at a time (one for each processor)")
      ->type_name("N")
      ->check(within(1, kMostJobs));
  render->add_flag("-q,--quiet", o.quiet, "No line for each file");
  render->footer(kExamples);
}

int runRender(const RenderOptions& options, Console& console) {
  StripRunner start = startFrom(options.start);
  const Setting setting = start.setting();
  const RenderPlan plan = planFrom(options, setting);
  const PicturePlan picture = pictureFrom(options);
  std::vector<Job> jobs = jobsFrom(options, plan.format);
  refuseSharedOutputs(options, jobs);
  if (!options.outputFolder.empty()) makeFolder(options.outputFolder);
  const auto processors = static_cast<std::size_t>(std::max(1U, std::thread::hardware_concurrency()));
  const std::size_t workers = options.jobs > 0 ? static_cast<std::size_t>(options.jobs) : processors;
  StripMaker maker(std::move(start));
  Batch(plan, picture, options, maker, jobs, console).run(std::min(workers, jobs.size()));
  stopIfInterrupted();
  const bool allDone = std::ranges::none_of(jobs, [](const Job& job) { return job.failure != nullptr; });
  if (!options.meters.empty() && (allDone || jobs.size() > 1)) writeMeters(options.meters, jobs);
  if (!options.savePreset.empty() && allDone) savePreset(options.savePreset, setting);
  if (!options.saveState.empty() && allDone) writeState(options.saveState, maker.start());
  return allDone ? kDone : kFailed;
}

}  // namespace corvane::cli
