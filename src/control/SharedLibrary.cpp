#include "control/SharedLibrary.h"

namespace corvane {

namespace {

constexpr std::int32_t kSmallestZoomPercent = 70, kLargestZoomPercent = 400, kPlainZoomPercent = 100;
constexpr double kZoomSettingPerPercent = 0.001;

std::vector<PresetRecord> readFactoryBank() {
  std::vector<PresetRecord> records(kFactoryPlaces);
  for (int index = 0; index < kFactoryPlaces; ++index) {
    std::array<double, kParameters> values{};
    PresetRecord& record = records[static_cast<std::size_t>(index)];
    factoryPreset(index, values.data(), record.name, nullptr);
    std::ranges::transform(values, record.values.begin(), [](double v) { return static_cast<float>(v); });
  }
  return records;
}

std::filesystem::path userRootIn(const std::filesystem::path& documents) {
  return documents.empty() ? documents : documents / "Quadrexa" / "User Presets" / "QDX Corvane";
}

std::int32_t readZoomPercent(const Settings& settings) {
  double stored = kPlainZoomPercent * kZoomSettingPerPercent;
  settings.read(kZoomSetting, &stored);
  const auto percent = static_cast<std::int32_t>(stored / kZoomSettingPerPercent + 0.5);
  if (percent > kLargestZoomPercent) return kPlainZoomPercent;
  return std::max(percent, kSmallestZoomPercent);
}

}  // namespace

std::shared_ptr<SharedLibrary> SharedLibrary::acquire(const platform::Services& services) {
  static std::mutex mutex;
  static std::weak_ptr<SharedLibrary> inUse;
  const std::lock_guard lock(mutex);
  auto library = inUse.lock();
  if (!library) inUse = library = std::make_shared<SharedLibrary>(services);
  return library;
}

SharedLibrary::SharedLibrary(const platform::Services& services)
    : userRoot(userRootIn(services.folders.documents)),
      factoryRecords(readFactoryBank()),
      trace(services.trace),
      categories(std::make_shared<const PresetTable>(makeCategoryLists())),
      designers(std::make_shared<const PresetTable>(makeDesignerLists())) {
  const Settings settings(services.settings);
  double tooltips = 1.0;
  settings.read(kTooltipsSetting, &tooltips);
  tooltipsEnabled = tooltips >= 0.5;
  zoomPercent = readZoomPercent(settings);
  rescanUserFolders();
}

std::shared_ptr<const PresetTable> SharedLibrary::table(ListKind kind) const {
  if (kind == ListKind::categories) return categories;
  if (kind == ListKind::designers) return designers;
  const std::lock_guard lock(userMutex);
  return user;
}

void SharedLibrary::rescanUserFolders() {
  if (!userRoot.empty()) platform::makeFolder(userRoot);
  auto scanned = std::make_shared<const PresetTable>(scanUserFolders(userRoot, trace));
  const std::lock_guard lock(userMutex);
  user = std::move(scanned);
}

}  // namespace corvane
