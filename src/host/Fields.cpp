#include "host/Fields.h"

namespace corvane::host {

const std::array<AAX_CTypeID, kMeters> kMeterTypeIds = [] {
  std::array<AAX_CTypeID, kMeters> ids{AAX_TypeID("mtrI"), AAX_TypeID("mtrO"), AAX_TypeID("mtGR")};
  std::size_t at = kPlainMeters;
  // two sets of 32: the order of the letters is what hosts have stored
  static constexpr const char* kLong = "ABCDEFGHIJKLMNOPRSTUWQXYZV";
  static constexpr const char* kShort = "ABCDEF";
  const auto add = [&](const char* prefix, const char* letters) {
    for (const char* letter = letters; *letter; ++letter) {
      const char text[5] = {prefix[0], prefix[1], prefix[2], *letter, 0};
      ids[at++] = AAX_TypeID(text);
    }
  };
  add("mtc", kLong);
  add("mrc", kShort);
  add("mtt", kLong);
  add("mrt", kShort);
  return ids;
}();

}  // namespace corvane::host
