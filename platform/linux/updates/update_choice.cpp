#include "platform/linux/updates/update_choice.h"

#include "platform/linux/updates/version.h"

namespace {

bool isWanted(const AppcastItem& item, const UpdateWish& wish) {
  if (item.system != "linux") return false;
  if (!item.processor.empty() && item.processor != wish.system.processor) return false;
  if (wish.skipped && Version(item.version) == Version(*wish.skipped)) return false;
  return Version(item.version) > Version(wish.ownVersion);
}

bool isInstallable(const AppcastItem& item, const RunningSystem& system) {
  if (!system.isLikeDebian) return false;
  return system.version.empty() || Version(system.version) >= Version(item.minimumSystem);
}

void keepNewer(std::optional<AppcastItem>& kept, const AppcastItem& item) {
  if (!kept || Version(item.version) > Version(kept->version)) kept = item;
}

}  // namespace

UpdateChoice choose(const std::vector<AppcastItem>& items, const UpdateWish& wish) {
  UpdateChoice choice;
  for (const AppcastItem& item : items)
    if (isWanted(item, wish)) keepNewer(isInstallable(item, wish.system) ? choice.item : choice.unsuitable, item);
  if (choice.item) choice.unsuitable.reset();
  return choice;
}
