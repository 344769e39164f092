#include <gtest/gtest.h>
#include <lilv/lilv.h>
#include <lv2/atom/atom.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include "control/FactoryBank.h"
#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "tests/lv2/RawHost.h"

// The bundle as hosts see it: read and run through lilv.

namespace corvane::lv2 {
namespace {

#define PRESET_NS "http://lv2plug.in/ns/ext/presets#"

struct NodeGone {
  void operator()(LilvNode* node) const { lilv_node_free(node); }
};
using Node = std::unique_ptr<LilvNode, NodeGone>;

class Bundle : public ::testing::Test {
 protected:
  Bundle() {
    useOwnHome();
    const Node path(lilv_new_file_uri(world, nullptr, LV2_BUNDLE "/"));
    lilv_world_load_bundle(world, path.get());
    lilv_world_load_specifications(world);
  }
  ~Bundle() override { lilv_world_free(world); }

  Node uri(const std::string& text) const { return Node(lilv_new_uri(world, text.c_str())); }
  const LilvPlugin* plugin(const char* name = kPluginUri) const {
    return lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world), uri(name).get());
  }
  std::string value(const LilvNode* subject, const char* predicate) const {
    const Node found(lilv_world_get(world, subject, uri(predicate).get(), nullptr));
    return found ? lilv_node_as_string(found.get()) : "";
  }
  /// Calls `use(preset, label, bank)` for each of the plug-in's presets.
  template <typename Use>
  void eachPreset(const char* of, Use use) {
    LilvNodes* presets = lilv_plugin_get_related(plugin(of), uri(PRESET_NS "Preset").get());
    LILV_FOREACH(nodes, i, presets) {
      const LilvNode* preset = lilv_nodes_get(presets, i);
      lilv_world_load_resource(world, preset);
      const Node bank(lilv_world_get(world, preset, uri(PRESET_NS "bank").get(), nullptr));
      use(preset, value(preset, LILV_NS_RDFS "label"), bank ? value(bank.get(), LILV_NS_RDFS "label") : "");
    }
    lilv_nodes_free(presets);
  }

  LilvWorld* world = lilv_world_new();
  Uris uris;
};

/// Place of a preset in the factory bank, which ends its URI.
int indexOf(const LilvNode* preset) {
  const std::string uri = lilv_node_as_uri(preset);
  return std::stoi(uri.substr(uri.size() - 3));
}

/// Index, symbol and, for a control, range and default of each port.
std::string portList(const LilvPlugin* plugin) {
  std::ostringstream list;
  const std::uint32_t count = lilv_plugin_get_num_ports(plugin);
  std::vector<float> low(count), high(count), standard(count);
  lilv_plugin_get_port_ranges_float(plugin, low.data(), high.data(), standard.data());
  for (std::uint32_t k = 0; k < count; ++k) {
    const LilvPort* port = lilv_plugin_get_port_by_index(plugin, k);
    list << k << " " << lilv_node_as_string(lilv_port_get_symbol(plugin, port));
    if (!std::isnan(low[k])) list << " " << low[k] << " " << high[k] << " " << standard[k];
    list << "\n";
  }
  return list.str();
}

// Sessions hold symbols and values: a line of the list may be added at its end, never changed.
TEST_F(Bundle, SymbolsAndRangesNeverChange) {
  std::ifstream file(LV2_SYMBOLS);
  const std::string pinned{std::istreambuf_iterator<char>(file), {}};
  const std::string now = portList(plugin(kSideChainPluginUri));
  EXPECT_EQ(now, pinned);
  const std::string plain = portList(plugin());
  EXPECT_TRUE(now.starts_with(plain)) << "both plug-ins have the same ports, the key stands behind them";
}

TEST_F(Bundle, AsksNothingOfAHost) {
  for (const char* name : {kPluginUri, kSideChainPluginUri}) {
    ASSERT_TRUE(plugin(name)) << name;
    LilvNodes* required = lilv_plugin_get_required_features(plugin(name));
    EXPECT_EQ(lilv_nodes_size(required), 0u);
    lilv_nodes_free(required);
    EXPECT_TRUE(lilv_plugin_verify(plugin(name)));
    EXPECT_TRUE(lilv_plugin_has_latency(plugin(name)));
    EXPECT_EQ(lilv_plugin_get_num_ports_of_class(plugin(name), uri(LILV_URI_AUDIO_PORT).get(),
                                                 uri(LILV_URI_INPUT_PORT).get(), nullptr),
              name == kPluginUri ? 1u : 2u);
  }
  const LilvPort* enabled = lilv_plugin_get_port_by_designation(plugin(), uri(LILV_URI_INPUT_PORT).get(),
                                                                uri(LV2_CORE__enabled).get());
  ASSERT_TRUE(enabled);
  EXPECT_STREQ(lilv_node_as_string(lilv_port_get_symbol(plugin(), enabled)), "enabled");
}

TEST_F(Bundle, ChoicesHaveTheirWords) {
  for (const auto& [symbol, words] : {std::pair{"comp_type", 4u},
                                      {"insx_type", 26u},
                                      {"flt_parametric_type", 5u},
                                      {"lim_shape", 6u},
                                      {"eq_position", 9u},
                                      {"gate_ratio", 11u}}) {
    const LilvPort* port =
        lilv_plugin_get_port_by_symbol(plugin(), Node(lilv_new_string(world, symbol)).get());
    ASSERT_TRUE(port) << symbol;
    EXPECT_TRUE(lilv_port_has_property(plugin(), port, uri(LV2_CORE__enumeration).get())) << symbol;
    LilvScalePoints* points = lilv_port_get_scale_points(plugin(), port);
    EXPECT_EQ(lilv_scale_points_size(points), words) << symbol;
    lilv_scale_points_free(points);
  }
}

TEST_F(Bundle, EveryFactorySettingIsAPresetOfBothPlugins) {
  std::map<std::string, int> expected;
  for (int index = 0; index < kFactoryPlaces; ++index) {
    std::int32_t group[2] = {-1, 0};
    factoryPreset(index, nullptr, nullptr, group);
    ++expected[group[0] < 0 ? "Init" : factoryCategories()[static_cast<std::size_t>(group[0])]];
  }
  for (const char* name : {kPluginUri, kSideChainPluginUri}) {
    std::map<std::string, int> banks;
    eachPreset(name, [&](const LilvNode*, const std::string& label, const std::string& bank) {
      EXPECT_FALSE(label.empty());
      ++banks[bank];
    });
    EXPECT_EQ(banks, expected) << name;
  }
}

/// Values that a host would set, by symbol.
using Values = std::map<std::string, float>;
void note(const char* symbol, void* to, const void* value, std::uint32_t size, std::uint32_t) {
  ASSERT_EQ(size, sizeof(float));
  (*static_cast<Values*>(to))[symbol] = *static_cast<const float*>(value);
}

TEST_F(Bundle, APresetSetsWhatTheFactoryBankHolds) {
  int exact = 0, all = 0;
  eachPreset(kPluginUri, [&](const LilvNode* preset, const std::string& label, const std::string&) {
    std::array<double, kParameters> wanted{};
    factoryPreset(indexOf(preset), wanted.data(), nullptr, nullptr);
    LilvState* state = lilv_state_new_from_world(world, &uris.map, preset);
    ASSERT_TRUE(state);
    Values set;
    lilv_state_emit_port_values(state, note, &set);
    lilv_state_free(state);
    for (const ControlPort& port : ports().controls) {
      const auto at = set.find(port.symbol);
      if (at == set.end()) continue;
      const double p = port.scale.normalised(at->second), held = wanted[static_cast<std::size_t>(port.id)];
      const int offset = port.id - kRack[static_cast<std::size_t>(port.place)].parameterBase;
      const auto typeOf = [&](double v) {
        return port.place < kFixedPlaces ? decodeVariant(v) : decodeInsertIndex(v);
      };
      if (offset == kTypeOffset) {
        // a type without a module passes its input: such a place is off
        const bool exists =
            std::ranges::any_of(port.scale.choices, [&](const Choice& c) { return c.value == typeOf(held); });
        EXPECT_EQ(typeOf(p), exists ? typeOf(held) : 0) << label << " " << port.symbol;
        EXPECT_TRUE(exists || port.place == 5 || port.place >= kFixedPlaces)
            << label << ": others run it as another";
      } else if (offset == kPositionOffset)
        EXPECT_EQ(decodePosition(p), decodePosition(held)) << label << " " << port.symbol;
      else if (port.scale.form == Scale::Form::toggle)
        EXPECT_EQ(p, decodeSwitch(held)) << label << " " << port.symbol;
      else if (port.scale.form == Scale::Form::choice)
        EXPECT_NEAR(p, held, 0.5 / static_cast<double>(port.scale.choices.size() - 1))
            << label << " " << port.symbol;
      else
        EXPECT_NEAR(p, held, 1e-7) << label << " " << port.symbol;
      if (port.scale.form != Scale::Form::choice && port.scale.form != Scale::Form::toggle)
        ++all, exact += static_cast<float>(p) == static_cast<float>(held);
    }
    EXPECT_GE(set.size(), 127u) << label;
    EXPECT_FALSE(set.contains("enabled"));
  });
  std::printf("preset values that come back to the bit: %d of %d\n", exact, all);
}

/// An instance made by lilv, with its controls.
struct Hosted {
  Hosted(const LilvPlugin* ofPlugin, Uris& uris) : plugin(ofPlugin), floatType(uris.id(LV2_ATOM__Float)) {
    const LV2_Feature* features[] = {&uris.feature, nullptr};
    instance = lilv_plugin_instantiate(plugin, 48000.0, features);
    for (const ControlPort& port : ports().controls) controls[port.symbol] = port.scale.standard;
    for (std::uint32_t k = 0; k < ports().controls.size(); ++k)
      lilv_instance_connect_port(instance, kFirstControlPort + k, &controls[ports().controls[k].symbol]);
    lilv_instance_activate(instance);
  }
  ~Hosted() { lilv_instance_free(instance); }
  Floats render(const Floats& in) {
    Floats out(in.size());
    lilv_instance_connect_port(instance, kInputPort, const_cast<float*>(in.data()));
    lilv_instance_connect_port(instance, kOutputPort, out.data());
    lilv_instance_run(instance, static_cast<std::uint32_t>(in.size()));
    return out;
  }
  const LilvPlugin* plugin;
  const LV2_URID floatType;
  LilvInstance* instance;
  Values controls;
};

TEST_F(Bundle, ASessionThroughLilvSoundsTheSame) {
  const Floats x = programme(24000);
  int tried = 0;
  eachPreset(kPluginUri, [&](const LilvNode* preset, const std::string& label, const std::string&) {
    if (indexOf(preset) % 10 != 0) return;  // every tenth of the bank
    ++tried;
    Hosted first(plugin(), uris), second(plugin(), uris);
    const auto set = [](const char* symbol, void* to, const void* value, std::uint32_t, std::uint32_t) {
      static_cast<Hosted*>(to)->controls.at(symbol) = *static_cast<const float*>(value);
    };
    LilvState* chosen = lilv_state_new_from_world(world, &uris.map, preset);
    lilv_state_restore(chosen, first.instance, set, &first, 0, nullptr);
    lilv_state_free(chosen);
    // colours differ from unit to unit, in the preamp's place and in the inserts
    first.controls.at("pre_type") = 1.0f;
    for (const char* insert : {"insx_type", "insy_type"})
      if (first.controls.at(insert) <= 5.0f) first.controls.at(insert) = 0.0f;
    first.controls.at("gate_position") = 5.0f;  // which another place asks for too
    first.render(Floats(64));
    LilvState* saved = lilv_state_new_from_instance(
        plugin(), first.instance, &uris.map, nullptr, nullptr, nullptr, nullptr,
        [](const char* symbol, void* from, std::uint32_t* size, std::uint32_t* type) -> const void* {
          *size = sizeof(float), *type = static_cast<Hosted*>(from)->floatType;
          return &static_cast<Hosted*>(from)->controls[symbol];
        },
        &first, LV2_STATE_IS_POD, nullptr);
    ASSERT_TRUE(saved);
    lilv_state_restore(saved, second.instance, set, &second, 0, nullptr);
    lilv_state_free(saved);
    EXPECT_EQ(second.controls, first.controls) << label;
    second.render(Floats(64));
    EXPECT_EQ(second.render(x), first.render(x)) << label;
  });
  EXPECT_EQ(tried, (kFactoryPlaces + 9) / 10);
}

}  // namespace
}  // namespace corvane::lv2
