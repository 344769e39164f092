#include "host/Description.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "host/SharedBlock.h"

namespace corvane::host {
namespace {

/// Writes down what it is told, one line each, and refuses line number `refuseAt`.
class Recorder final : public AAX_ICollection, public AAX_IEffectDescriptor, public AAX_IComponentDescriptor {
 public:
  std::vector<std::string> lines;
  std::vector<AAX_CProcPtrID> factories;
  int refuseAt = -1;
  bool noDescriptor = false;

  AAX_IEffectDescriptor* NewDescriptor() override { return noDescriptor ? nullptr : this; }
  AAX_Result AddEffect(const char* identifier, AAX_IEffectDescriptor*) override {
    return note(std::string("effect ") + identifier);
  }
  AAX_Result SetManufacturerName(const char* name) override {
    return note(std::string("manufacturer ") + name);
  }
  AAX_Result AddPackageName(const char* name) override { return note(std::string("package ") + name); }
  AAX_Result SetPackageVersion(std::uint32_t version) override {
    return note("version " + std::to_string(version));
  }

  AAX_IComponentDescriptor* NewComponentDescriptor() override { return this; }
  AAX_Result AddComponent(AAX_IComponentDescriptor*) override { return note("algorithm"); }
  AAX_Result AddName(const char* name) override { return note(std::string("name ") + name); }
  AAX_Result AddCategory(std::uint32_t mask) override { return note("category " + std::to_string(mask)); }
  AAX_Result AddProcPtr(void* factory, AAX_CProcPtrID id) override {
    EXPECT_NE(factory, nullptr);
    return note("factory " + std::to_string(id));
  }
  AAX_Result AddResourceInfo(AAX_EResourceType type, const char* file) override {
    return note("resource " + std::to_string(type) + " " + file);
  }
  AAX_Result AddMeterDescription(AAX_CTypeID id, const char* name, AAX_IPropertyMap* map) override {
    return note("meter " + letters(id) + " " + name + static_cast<Map*>(map)->text);
  }

  AAX_Result AddAudioIn(AAX_CFieldIndex f) override { return field("audio in", f); }
  AAX_Result AddAudioOut(AAX_CFieldIndex f) override { return field("audio out", f); }
  AAX_Result AddAudioBufferLength(AAX_CFieldIndex f) override { return field("frames", f); }
  AAX_Result AddSampleRate(AAX_CFieldIndex f) override { return field("rate", f); }
  AAX_Result AddSideChainIn(AAX_CFieldIndex f) override { return field("side chain", f); }
  AAX_Result AddMeters(AAX_CFieldIndex f, const AAX_CTypeID* ids, std::uint32_t count) override {
    return field("meters " + letters(ids[0]) + ".." + letters(ids[count - 1]) + " " + std::to_string(count),
                 f);
  }
  AAX_Result AddMIDINode(AAX_CFieldIndex f, AAX_EMIDINodeType type, const char* name,
                         std::uint32_t mask) override {
    return field("midi " + std::to_string(type) + " " + name + " " + std::to_string(mask), f);
  }
  AAX_Result AddDataInPort(AAX_CFieldIndex f, std::uint32_t size, AAX_EDataInPortType type) override {
    return field("port " + std::to_string(size) + " " + std::to_string(type), f);
  }
  AAX_Result AddPrivateData(AAX_CFieldIndex f, std::int32_t size) override {
    return field("private " + std::to_string(size), f);
  }
  AAX_Result AddProcessProc_Native(AAX_CProcessProc process, AAX_IPropertyMap* map) override {
    EXPECT_NE(process, nullptr);
    return note("process" + static_cast<Map*>(map)->text);
  }
  AAX_IPropertyMap* NewPropertyMap() override { return &maps.emplace_back(); }

 private:
  struct Map final : AAX_IPropertyMap {
    std::string text;
    AAX_Result AddProperty(AAX_EProperty property, AAX_CPropertyValue value) override {
      text += " " + std::to_string(property) + "=" + std::to_string(value);
      return AAX_SUCCESS;
    }
  };

  AAX_Result note(std::string line) {
    if (static_cast<int>(lines.size()) == refuseAt) return AAX_ERROR_UNIMPLEMENTED;
    lines.push_back(std::move(line));
    return AAX_SUCCESS;
  }
  AAX_Result field(const std::string& what, AAX_CFieldIndex f) {
    return note("field " + std::to_string(f) + " " + what);
  }
  static std::string letters(AAX_CTypeID id) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(id >> shift & 0xFF);
    return text;
  }

  std::deque<Map> maps;
};

std::string size(std::size_t bytes) { return std::to_string(bytes); }

/// What hosts have been told since the first release, in order.
std::vector<std::string> agreed() {
  std::vector<std::string> lines{"name QDX Corvane Mono",
                                 "category 707",
                                 "field 361 audio in",
                                 "field 362 audio out",
                                 "field 363 frames",
                                 "field 364 rate",
                                 "field 366 side chain",
                                 "field 365 meters mtrI..mrtF 67",
                                 "field 367 midi 0 QDX Corvane Mono 65535",
                                 "field 369 midi 3 Transport 65535"};
  for (int f = 0; f <= 360; ++f) lines.push_back("field " + std::to_string(f) + " port 4 1");
  lines.push_back("field 370 private " + size(sizeof(SharedBlock)));
  lines.push_back("field 372 private 4");
  lines.push_back("field 371 private 4");
  lines.push_back("field 373 private " + size(sizeof(CorvaneMonoEffect)));
  // "QDXa", "QcMN", "QmMN", "QaMN" as words
  lines.push_back("process 11=1363433569 12=1365462350 60=1 116=1 51=1 52=1 13=1366117710 14=1365331278");
  lines.insert(lines.end(), {"algorithm", "factory 0", "resource 1 QDXCorvaneMonoPageTables.xml", "factory 5",
                             "factory 1", "meter mtrI Input 200=0 201=0", "meter mtrO Output 200=1 201=0",
                             "meter mtGR GainReduction 200=2 201=0"});
  for (const char* prefix : {"mtc", "mrc", "mtt", "mrt"})
    for (const char letter : std::string(prefix[1] == 't' ? "ABCDEFGHIJKLMNOPRSTUWQXYZV" : "ABCDEF"))
      lines.push_back(std::string("meter ") + prefix + letter + " Custom 200=5 201=0 202=1");
  lines.insert(lines.end(), {"effect example.quadrexa.aax.CorvaneMono", "manufacturer Quadrexa",
                             "package QDX Corvane Mono - channel strip emulation", "package QDX Corvane Mono",
                             "package QDX Corvane Mn", "version 1200"});
  return lines;
}

TEST(Description, TellsEverythingInItsOrder) {
  Recorder recorder;
  ASSERT_EQ(describeCollection(&recorder), AAX_SUCCESS);
  const auto expected = agreed();
  ASSERT_EQ(recorder.lines.size(), expected.size());
  for (std::size_t k = 0; k < expected.size(); ++k) EXPECT_EQ(recorder.lines[k], expected[k]) << k;
}

TEST(Description, PassesEveryRefusalUpAndStopsThere) {
  const int lines = static_cast<int>(agreed().size());
  for (int at = 0; at < lines; ++at) {
    Recorder recorder;
    recorder.refuseAt = at;
    EXPECT_EQ(describeCollection(&recorder), AAX_ERROR_UNIMPLEMENTED) << at;
    EXPECT_EQ(static_cast<int>(recorder.lines.size()), at);
  }
  Recorder none;
  none.noDescriptor = true;
  EXPECT_EQ(describeCollection(&none), AAX_ERROR_NULL_OBJECT);
  EXPECT_EQ(describeCollection(nullptr), AAX_ERROR_NULL_OBJECT);
}

TEST(Description, CustomMetersCarryTheBanksInRisingOrder) {
  EXPECT_EQ(customMeterId(0), 361);
  EXPECT_EQ(customMeterId(62), 423);
  EXPECT_EQ(customMeterId(63), -1);
}

}  // namespace
}  // namespace corvane::host
