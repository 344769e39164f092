#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "control/PresetLists.h"
#include "control/PresetRecord.h"
#include "control/Settings.h"
#include "platform/system/Services.h"

namespace corvane {

/// What all instances in a process share: the lists of presets, the factory bank as records, and the settings
/// of the window. Lives from the first preset manager to the last.
class SharedLibrary {
 public:
  /// The one in use, or a new one made with `services`. [any]
  static std::shared_ptr<SharedLibrary> acquire(const platform::Services& services);

  explicit SharedLibrary(const platform::Services& services);

  /// The table of a kind as it now is; a later scan does not change what the caller holds. [any]
  std::shared_ptr<const PresetTable> table(ListKind kind) const;
  /// Reads the user's folders anew. [control]
  void rescanUserFolders();

  /// Where the user's presets are; empty for a user without a home.
  const std::filesystem::path userRoot;
  const std::vector<PresetRecord> factoryRecords;
  bool tooltipsEnabled = true;
  std::int32_t zoomPercent = 100;

 private:
  platform::Trace& trace;
  const std::shared_ptr<const PresetTable> categories, designers;
  mutable std::mutex userMutex;  ///< hosts may open instances on several threads
  std::shared_ptr<const PresetTable> user;
};

}  // namespace corvane
