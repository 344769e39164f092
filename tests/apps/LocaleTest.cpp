#include <clocale>
#include <cstdio>
#include <locale>
#include <regex>

#include "tests/apps/CommandRig.h"

// A host, or whoever embeds the commands, may set any locale. Numbers, names and files stay as they are.

namespace corvane::rig {
namespace {

/// A German locale of the test's own, in force while it lives: commas in numbers, points between thousands.
class GermanLocale {
 public:
  explicit GermanLocale(const std::string& folder) {
    std::filesystem::create_directories(folder);
    const std::string made = folder + "/" + kName;
    if (std::system(("localedef -c -i de_DE -f UTF-8 '" + made + "'").c_str()) != 0) return;
    ::setenv("LOCPATH", folder.c_str(), 1);
    if (!std::setlocale(LC_ALL, kName)) return;
    before = std::locale::global(std::locale(kName));
    char text[8];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    inForce = std::string(text) == "1,5";
  }
  ~GermanLocale() {
    std::locale::global(before);
    std::setlocale(LC_ALL, "C");
    ::unsetenv("LOCPATH");
  }
  bool inForce = false;

 private:
  static constexpr const char* kName = "de_DE.UTF-8";
  std::locale before = std::locale::classic();
};

struct LocaleOf : CommandLineTest {
  /// Everything that commands print and write, by what was asked.
  std::vector<std::pair<std::string, std::string>> everything() {
    std::vector<std::pair<std::string, std::string>> all;
    const auto keep = [&](const std::vector<std::string>& arguments) {
      const Answer answer = run(arguments);
      EXPECT_EQ(answer.code, 0) << answer.err;
      std::string name;
      for (const auto& argument : arguments) name += argument + " ";
      all.emplace_back(name, answer.out + answer.err);
    };
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"params"},
                                               {"params", "--json", "--insert", "De-esser"},
                                               {"params", "--markdown"},
                                               {"params", "--text", "Comp:Threshold=0.37", "--parse",
                                                "EQ:HI Freq=2k5", "--parse", "Comp:Attack=1.25"},
                                               {"presets", "--json"},
                                               {"show", "5"},
                                               {"show", "--json", "5"},
                                               {"describe"}})
      keep(arguments);
    write("in.wav", {48000, {noise(4000)}});
    writeBytes("a.csv", "0.0125,Mstr:Gain,0.25\n");
    keep({"render",
          at("in.wav"),
          "-o",
          at("out.wav"),
          "--set",
          "Pre:Type=-",
          "--set",
          "Comp:Threshold=-12.5",
          "--raw",
          "Lim:Release=0.125",
          "--automation",
          at("a.csv"),
          "--tail",
          "0.01",
          "--bypass",
          "0.025:0.05",
          "--meters",
          at("m.json"),
          "--meter-log",
          at("l.csv"),
          "--picture",
          at("p.svg"),
          "--save-preset",
          at("p.qdx"),
          "--save-state",
          at("s.state")});
    keep({"plot", "response", "--set", "Pre:Type=-", "--level", "-20.5", "--csv"});
    writeBytes("script",
               "edit Pre:Type -\nedit Comp:Threshold -12.5\ntext Comp:Threshold\nget Comp:Threshold\nrun "
               "0.25\nmeters\n");
    keep({"session", "--rate", "44100.5", at("script")});
    for (const char* file : {"out.wav", "m.json", "l.csv", "p.svg", "p.qdx", "s.state"}) {
      // a picture counts the surfaces of the process
      all.emplace_back(file, std::regex_replace(bytes(file), std::regex("\"surface[0-9]+\""), ""));
      EXPECT_GT(all.back().second.size(), 100U) << file;
    }
    return all;
  }
};

TEST_F(LocaleOf, AHostChangesNothing) {
  const auto expected = everything();
  const GermanLocale german(at("locales"));
  ASSERT_TRUE(german.inForce) << "needs localedef and the definitions of the package locales";
  const auto got = everything();
  ASSERT_EQ(got.size(), expected.size());
  for (std::size_t k = 0; k < got.size(); ++k) EXPECT_TRUE(got[k] == expected[k]) << expected[k].first;
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "de_DE.UTF-8") << "nobody set it back";
}

}  // namespace
}  // namespace corvane::rig
