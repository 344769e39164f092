// corvane_audition: hears the factory presets and prints what they do to the material of their category.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>

#include "audition/Audition.h"
#include "audition/Table.h"
#include "corvane/Failure.h"
#include "corvane/Words.h"

namespace corvane::audition {
namespace {

struct Options {
  std::string category, preset, soundFolder;
  SoundFolders sounds;
};

bool holds(const std::string& text, const std::string& part) {
  return cli::lowerCase(text).find(cli::lowerCase(part)) != std::string::npos;
}

/// By index, or by part of the name.
bool isAsked(const Auditioned& preset, const std::string& words) {
  return words.empty() || words == std::to_string(preset.index) || holds(preset.name, words);
}

void writeSounds(const std::vector<Auditioned>& presets, MaterialShelf& shelf, const std::string& folder) {
  std::filesystem::create_directories(folder);
  for (const Auditioned& preset : presets) {
    std::string name = fmt::format("{:03}-{}", preset.index, preset.name);
    std::ranges::replace(name, '/', '-');
    writeSound(std::filesystem::path(folder) / (name + ".in.wav"), shelf.get(preset.material));
    writeSound(std::filesystem::path(folder) / (name + ".out.wav"), preset.hearing.output);
  }
}

int run(const Options& options) {
  MaterialShelf shelf(options.sounds);
  // The whole category is heard even for one preset: the nearest may be any of it.
  std::vector<std::string> categories;
  audition(
      [&](const Auditioned& preset) {
        if (isAsked(preset, options.preset)) categories.push_back(preset.category);
        return false;
      },
      shelf);
  auto presets = audition(
      [&](const Auditioned& preset) {
        return (options.category.empty() ||
                cli::lowerCase(preset.category) == cli::lowerCase(options.category)) &&
               std::ranges::find(categories, preset.category) != categories.end();
      },
      shelf);
  std::erase_if(presets, [&](const Auditioned& preset) { return !isAsked(preset, options.preset); });
  if (presets.empty())
    cli::refuse("no preset of category \"{}\" is called \"{}\"", options.category, options.preset);
  if (!options.soundFolder.empty()) writeSounds(presets, shelf, options.soundFolder);
  std::cout << tableOf(presets);
  const auto marked =
      std::ranges::count_if(presets, [](const auto& preset) { return !marksOf(preset).empty(); });
  std::cout << fmt::format("\n{} presets, {} marked\n", presets.size(), marked);
  return std::cout.flush() ? cli::kDone : cli::kFailed;
}

}  // namespace
}  // namespace corvane::audition

int main(int argc, char** argv) try {
  using namespace corvane;
  audition::Options options;
  CLI::App app("Hears factory presets on the material of their category and measures them.");
  app.add_option("--category", options.category, "Only this category");
  app.add_option("--preset", options.preset, "Only presets whose name holds this, or the one at this place");
  app.add_option("--sounds", options.soundFolder,
                 "Also write what went in and out, as WAV, into this folder");
  app.add_option("--kits", options.sounds.kits,
                 "Folder of the recorded drums (" + options.sounds.kits.string() + ")");
  CLI11_PARSE(app, argc, argv);
  return audition::run(options);
} catch (const corvane::cli::Failure& failure) {
  std::cerr << "error: " << failure.what() << '\n';
  return failure.exitCode;
} catch (const std::exception& error) {
  std::cerr << "error: " << error.what() << '\n';
  return corvane::cli::kFailed;
}
