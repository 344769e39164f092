#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "platform/system/Services.h"

// A user's home that a test owns: a temporary folder, a clock that moves when told, a desktop that only takes
// notes.

namespace corvane::rig {

class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").native();
    path = ::mkdtemp(name.data());
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::filesystem::path path;
};

inline void writeFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& content) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
}

inline std::vector<std::uint8_t> contentOf(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

struct Home : Folder {
  struct OwnClock final : platform::Clock {
    std::uint32_t nowMs = 1000;
    std::uint32_t milliseconds() override { return nowMs; }
    std::string timeOfDay() override { return "21:05:09"; }
  };
  struct OwnDesktop final : platform::Desktop {
    std::vector<std::string> opened, messages;
    Opened answer = Opened::yes;
    Opened open(const std::string& target) override {
      opened.push_back(target);
      return answer;
    }
    void message(const std::string& title, const std::string& text) override {
      messages.push_back(title + ": " + text);
    }
  };
  struct OwnTrace final : platform::Trace {
    std::vector<std::string> lines;
    void line(std::string_view text) override { lines.emplace_back(text); }
  };

  /// Lives as long as the home, as a file would.
  struct OwnStore final : platform::SettingsStore {
    std::map<std::string, platform::Bytes> bytes;
    std::map<std::string, std::string> texts;
    template <typename Map, typename Value>
    static bool find(const Map& map, const std::string& name, Value* value) {
      const auto at = map.find(name);
      if (at != map.end()) *value = at->second;
      return at != map.end();
    }
    bool readBytes(const std::string& name, platform::Bytes* value) override {
      return find(bytes, name, value);
    }
    bool readText(const std::string& name, std::string* value) override { return find(texts, name, value); }
    bool writeBytes(const std::string& name, std::span<const std::uint8_t> value) override {
      bytes[name].assign(value.begin(), value.end());
      return true;
    }
    bool writeText(const std::string& name, const std::string& value) override {
      texts[name] = value;
      return true;
    }
  };

  OwnClock clock;
  OwnDesktop desktop;
  OwnTrace trace;
  OwnStore settings;
  platform::Services services{
      {path / "config" / "settings.sqlite3", path / "Documents"}, settings, clock, desktop, trace};

  std::filesystem::path presets() const { return path / "Documents/Quadrexa/User Presets/QDX Corvane"; }
};

}  // namespace corvane::rig
