#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "corvane/CommandLine.h"

// A person at the command line: a folder of their own, files to render, what the program answers.

namespace corvane::rig {

namespace fs = std::filesystem;

using Channel = std::vector<float>;

struct Sound {
  int rateHz = 48000;
  std::vector<Channel> channels;
  std::size_t frames() const { return channels.empty() ? 0 : channels[0].size(); }
};

struct Answer {
  int code = -1;
  std::string out, err;
};

class CommandLineTest : public testing::Test {
 protected:
  CommandLineTest() {
    folder = madeFolder();
    // the program looks into the user's folders: those of the test, once for the process
    static const struct Home {
      fs::path path = madeFolder();
      ~Home() { fs::remove_all(path); }
    } home;
    for (const char* variable : {"HOME", "XDG_CONFIG_HOME"}) ::setenv(variable, home.path.c_str(), 1);
  }
  ~CommandLineTest() override { fs::remove_all(folder); }

  /// In memory where there is such a place: every file is flushed to the disk before it gets its name.
  static std::string madeFolder() {
    const fs::path place = fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
    std::string pattern = (place / "corvane-test-XXXXXX").string();
    return ::mkdtemp(pattern.data());
  }

  std::string at(const std::string& name) const { return (folder / name).string(); }

  /// The command within this process.
  static Answer run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "corvane");
    std::vector<const char*> pointers;
    for (const auto& argument : arguments) pointers.push_back(argument.c_str());
    std::ostringstream out, err;
    cli::Console console(out, err, false);
    const int code = cli::runCommandLine(static_cast<int>(pointers.size()), pointers.data(), console);
    return {code, out.str(), err.str()};
  }

  /// `corvane render IN -o OUT` and more.
  Answer render(const std::string& input, const std::string& output,
                std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments{"render", at(input), "-o", at(output)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run(arguments);
  }

  /// The program in a process of its own, through a shell; the raw wait status.
  static int shell(const std::string& command) { return std::system(command.c_str()); }

  void write(const std::string& name, const Sound& sound,
             int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT) const {
    SF_INFO info{};
    info.samplerate = sound.rateHz;
    info.channels = static_cast<int>(sound.channels.size());
    info.format = format;
    SNDFILE* file = sf_open(at(name).c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    std::vector<float> frame(sound.channels.size());
    for (std::size_t i = 0; i < sound.frames(); ++i) {
      for (std::size_t c = 0; c < frame.size(); ++c) frame[c] = sound.channels[c][i];
      sf_writef_float(file, frame.data(), 1);
    }
    sf_close(file);
  }

  Sound read(const std::string& name) const {
    SF_INFO info{};
    SNDFILE* file = sf_open(at(name).c_str(), SFM_READ, &info);
    if (!file) {
      ADD_FAILURE() << name << ": " << sf_strerror(nullptr);
      return {};
    }
    Sound sound{info.samplerate, std::vector<Channel>(static_cast<std::size_t>(info.channels))};
    std::vector<float> frame(static_cast<std::size_t>(info.channels));
    while (sf_readf_float(file, frame.data(), 1) == 1)
      for (std::size_t c = 0; c < frame.size(); ++c) sound.channels[c].push_back(frame[c]);
    sf_close(file);
    return sound;
  }

  std::string bytes(const std::string& name) const {
    std::ifstream file(at(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  void writeBytes(const std::string& name, const std::string& content) const {
    std::ofstream(at(name), std::ios::binary) << content;
  }

  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(folder))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

  fs::path folder;
};

inline Channel noise(std::size_t frames, std::uint32_t seed = 1, float amplitude = 0.5F) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<float> draw(-amplitude, amplitude);
  Channel samples(frames);
  for (float& sample : samples) sample = draw(engine);
  return samples;
}

/// Everything out but what the test puts in: each sample then depends on no unit and no history.
inline const std::vector<std::string> kEmptyStrip{"--set", "Pre:Type=-",  "--set", "Flt:Type=-",
                                                  "--set", "Comp:Type=-", "--set", "EQ:Type=-"};

inline std::vector<std::string> emptyStripWith(std::vector<std::string> more) {
  more.insert(more.begin(), kEmptyStrip.begin(), kEmptyStrip.end());
  return more;
}

}  // namespace corvane::rig
