#pragma once

#include "host/LivingObject.h"
#include "platform/aax/AAX_CEffectParameters.h"

namespace corvane::host {

/// The window's object of an instance. It has no view: hosts show their generic controls. [control]
class QDX_QcMN_1200_AAX_GUI final : public AAX_CEffectGUI, private LivingObject {
 public:
  /// Factory function of the description.
  static AAX_IEffectGUI* Create() try { return new QDX_QcMN_1200_AAX_GUI; } catch (...) {
    return nullptr;
  }
};

}  // namespace corvane::host
