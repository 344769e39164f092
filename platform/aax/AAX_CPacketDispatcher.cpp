#include "platform/aax/AAX_CPacketDispatcher.h"

AAX_Result AAX_CPacketDispatcher::RegisterPacket(AAX_CParamID id, AAX_CFieldIndex field,
                                                 Generator generator) {
  if (!id || !generator) return AAX_ERROR_NULL_OBJECT;
  byId[id] = entries.size();
  entries.push_back({id, field, std::move(generator), true});
  anyDirty = true;
  return AAX_SUCCESS;
}

void AAX_CPacketDispatcher::SetDirty(AAX_CParamID id) {
  const auto at = byId.find(id);
  if (at == byId.end()) return;
  entries[at->second].dirty = true;
  anyDirty = true;
}

AAX_Result AAX_CPacketDispatcher::Dispatch() {
  if (!controller) return AAX_ERROR_NOT_INITIALIZED;
  if (!anyDirty) return AAX_SUCCESS;
  for (Entry& entry : entries) {
    if (!entry.dirty) continue;
    AAX_CPacket packet;
    entry.generator(entry.id.c_str(), packet);
    const AAX_Result result = controller->PostPacket(entry.field, packet.GetPtr(), packet.GetSize());
    if (result != AAX_SUCCESS) return result;  // what is left stays dirty for the next call
    entry.dirty = false;
  }
  anyDirty = false;
  return AAX_SUCCESS;
}
