#pragma once

#include "platform/aax/AAX_IDescription.h"

namespace corvane::host {

/// Tells `collection` all about the strip: the effect, its fields, meters, properties and factories.
AAX_Result describeCollection(AAX_ICollection* collection);

}  // namespace corvane::host
