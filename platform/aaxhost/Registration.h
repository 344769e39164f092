#pragma once

#include <deque>
#include <set>
#include <string>

#include "platform/aax/AAX_IDescription.h"
#include "platform/aaxhost/Description.h"

namespace corvane::aaxhost {

/// Takes down what a library tells while it is registered. What makes no sense is refused with an error code
/// and remembered in words, since a library may ignore the code.
class Registration final : public AAX_ICollection {
 public:
  Registration();
  ~Registration() override;

  AAX_IEffectDescriptor* NewDescriptor() override;
  AAX_Result AddEffect(const char* identifier, AAX_IEffectDescriptor* effect) override;
  AAX_Result SetManufacturerName(const char* name) override;
  AAX_Result AddPackageName(const char* name) override;
  AAX_Result SetPackageVersion(std::uint32_t version) override;

  /// The description, if it can be hosted; otherwise `complaint` is not empty.
  const Description& finish();
  const std::string& complaint() const { return wrong; }

 private:
  class Properties;
  class Algorithm;
  class Effect;

  /// Remembers the first complaint; gives `code`.
  AAX_Result refuse(AAX_Result code, const std::string& why);

  void checkFields();
  void checkMeters();

  std::deque<Properties> maps;  // elements stay where they are: the library holds their addresses
  std::deque<Algorithm> algorithms;
  std::deque<Effect> effects;
  int effectsAdded = 0;
  Description told;
  std::string wrong;
};

}  // namespace corvane::aaxhost
