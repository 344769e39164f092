#include <nlohmann/json.hpp>

#include "tests/apps/CommandRig.h"

// What the plug-in tells a host is what sessions, control surfaces and other hosts have stored: none of it
// may move. The tables here are written by hand, not read from the code.

namespace corvane::rig {
namespace {

using nlohmann::json;

struct Describe : CommandLineTest {
  const json told = json::parse(run({"describe", "--json"}).out);
};

/// `prefix` with each letter behind it.
void append(std::vector<std::string>& ids, const std::string& prefix, const std::string& letters) {
  for (const char letter : letters) ids.push_back(prefix + letter);
}

std::vector<std::string> meterIds() {
  std::vector<std::string> ids{"mtrI", "mtrO", "mtGR"};
  append(ids, "mtc", "ABCDEFGHIJKLMNOP"), append(ids, "mtc", "RSTU"), append(ids, "mtc", "WQXYZV");
  append(ids, "mrc", "ABCDEF");
  append(ids, "mtt", "ABCDEFGHIJKLMNOP"), append(ids, "mtt", "RSTU"), append(ids, "mtt", "WQXYZV");
  append(ids, "mrt", "ABCDEF");
  return ids;
}

TEST_F(Describe, TellsTheEffectAndItsPackage) {
  EXPECT_TRUE(told.at("effect").get<std::string>().ends_with(".aax.CorvaneMono"));
  EXPECT_EQ(told.at("names"), json({"QDX Corvane Mono"}));
  EXPECT_EQ(told.at("manufacturer"), "Quadrexa");
  EXPECT_EQ(told.at("packages"),
            json({"QDX Corvane Mono - channel strip emulation", "QDX Corvane Mono", "QDX Corvane Mn"}));
  EXPECT_EQ(told.at("version"), 1200);
  EXPECT_EQ(told.at("category"), 707);
  EXPECT_EQ(told.at("factories"), json({0, 5, 1})) << "parameters, direct data, window";
  EXPECT_EQ(told.at("resources"), json::parse(R"([{"type": 1, "file": "QDXCorvaneMonoPageTables.xml"}])"));
}

TEST_F(Describe, TellsThePropertiesOfTheProcessFunctionInOrder) {
  const std::pair<int, json> expected[] = {{11, "QDXa"}, {12, "QcMN"}, {60, 1},      {116, 1},
                                           {51, 1},      {52, 1},      {13, "QmMN"}, {14, "QaMN"}};
  const json& properties = told.at("properties");
  ASSERT_EQ(properties.size(), std::size(expected));
  for (std::size_t k = 0; k < std::size(expected); ++k) {
    EXPECT_EQ(properties[k].at("id"), expected[k].first);
    EXPECT_EQ(properties[k].at("value"), expected[k].second);
  }
}

TEST_F(Describe, TellsTheFieldsInTheirOrder) {
  json expected = json::parse(R"([
    {"field": 361, "kind": "audio in"},
    {"field": 362, "kind": "audio out"},
    {"field": 363, "kind": "buffer length"},
    {"field": 364, "kind": "sample rate"},
    {"field": 366, "kind": "side-chain in"},
    {"field": 365, "kind": "meters"},
    {"field": 367, "kind": "MIDI node", "node": "local input", "channels": 65535, "name": "QDX Corvane Mono"},
    {"field": 369, "kind": "MIDI node", "node": "transport", "channels": 65535, "name": "Transport"}])");
  expected[5]["meters"] = meterIds();
  for (int port = 0; port <= 360; ++port)
    expected.push_back({{"field", port}, {"kind", "data in port"}, {"buffered", true}, {"bytes", 4}});
  for (const int field : {370, 372, 371, 373})
    expected.push_back({{"field", field}, {"kind", "private data"}});
  json fields = told.at("fields");
  ASSERT_EQ(fields.size(), expected.size());
  EXPECT_EQ(fields[370].at("bytes"), 4) << "rate seen";
  EXPECT_EQ(fields[371].at("bytes"), 4) << "latency seen";
  for (std::size_t k = 369; k < fields.size(); ++k) fields[k].erase("bytes");  // sizes of our own objects
  for (std::size_t k = 0; k < fields.size(); ++k) EXPECT_EQ(fields[k], expected[k]);
}

TEST_F(Describe, TellsSixtySevenMetersInOrder) {
  const std::vector<std::string> ids = meterIds();
  ASSERT_EQ(ids.size(), 67U);
  const json& meters = told.at("meters");
  ASSERT_EQ(meters.size(), ids.size());
  const char* const names[] = {"Input", "Output", "GainReduction"};
  for (std::size_t k = 0; k < ids.size(); ++k) {
    json properties = json::array();
    properties.push_back({{"id", 200}, {"value", k < 3 ? static_cast<int>(k) : 5}});
    properties.push_back({{"id", 201}, {"value", 0}});
    if (k >= 3) properties.push_back({{"id", 202}, {"value", 1}});
    EXPECT_EQ(meters[k].at("id"), ids[k]);
    EXPECT_EQ(meters[k].at("name"), k < 3 ? names[k] : "Custom") << ids[k];
    EXPECT_EQ(meters[k].at("properties"), properties) << ids[k];
  }
}

TEST_F(Describe, IsAPageForAPerson) {
  const Answer page = run({"describe"});
  EXPECT_EQ(page.code, 0);
  for (const char* line :
       {"\n  0 to 360   data in port   4 bytes, buffered\n", "\n  361        audio in\n",
        "\n  13 = QmMN     native plug-in\n", "\n  mtGR  GainReduction  200 = 2, 201 = 0\n"})
    EXPECT_NE(page.out.find(line), std::string::npos) << line;
}

}  // namespace
}  // namespace corvane::rig
