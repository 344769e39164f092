#include "lv2/Effect.h"

#include <mutex>

namespace corvane::lv2 {

std::shared_ptr<aaxhost::Library> sharedEffect(const std::filesystem::path& bundle) {
  static std::mutex mutex;  // hosts may make instances on several threads
  static std::weak_ptr<aaxhost::Library> loaded;
  const std::lock_guard lock(mutex);
  auto effect = loaded.lock();
  if (!effect) loaded = effect = aaxhost::Library::load(bundle / "QDX Corvane Mono.aaxplugin");
  return effect;
}

}  // namespace corvane::lv2
