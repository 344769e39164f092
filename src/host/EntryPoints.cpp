#include "host/Description.h"
#include "host/LivingObject.h"
#include "platform/aax/AAX_IEffect.h"

// The functions by which a host knows the library; nothing else of it can be seen.

#define CORVANE_EXPORT extern "C" __attribute__((visibility("default")))

CORVANE_EXPORT AAX_Result ACFRegisterPlugin(AAX_ICollection* collection) try {
  return corvane::host::describeCollection(collection);
} catch (...) {
  return AAX_ERROR_NULL_OBJECT;
}

CORVANE_EXPORT AAX_Result ACFRegisterComponent() { return AAX_ERROR_UNIMPLEMENTED; }
CORVANE_EXPORT AAX_Result ACFGetClassFactory() { return AAX_ERROR_UNIMPLEMENTED; }
/// How many host-facing objects live; 0 lets the library go.
CORVANE_EXPORT AAX_Result ACFCanUnloadNow() { return corvane::host::LivingObject::living(); }
CORVANE_EXPORT AAX_Result ACFStartup() { return AAX_SUCCESS; }
CORVANE_EXPORT AAX_Result ACFShutdown() { return AAX_SUCCESS; }
CORVANE_EXPORT AAX_Result ACFGetSDKVersion() { return AAX_SDKVersion; }
CORVANE_EXPORT bool InitDll() { return true; }
CORVANE_EXPORT bool ExitDll() { return true; }
