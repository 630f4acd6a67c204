// The smaller commands of the menu and of the About window, quitting, and opening the program again.
#include <array>
#include <string>

#include "app/alert.h"
#include "app/bookmark_permission_controller.h"
#include "app/bring_to_front.h"
#include "app/sorter_delegate.h"
#include "engine/backups.h"
#include "platform/platform.h"
#include "platform/product.h"

namespace {

struct AboutButton {
  const char* title;
  void (SorterDelegate::*command)();
};

constexpr std::array<AboutButton, 3> aboutButtons = {{
    {"Website", &SorterDelegate::openWebsite},
    {"Support", &SorterDelegate::support},
    {"Open Backups", &SorterDelegate::openBackups},
}};

std::string aboutText() {
  Bundle& bundle = platform().bundle;
  return "Quillery\nVersion " + bundle.information("CFBundleShortVersionString").value_or("") + " (build " +
         bundle.information("CFBundleVersion").value_or("") +
         ")\n\nAutomatically organise Safari bookmarks alphabetically, with folders first.\n\n" +
         std::string(product::copyright);
}

}  // namespace

void SorterDelegate::showAbout() {
  if (!aboutWindow) {
    aboutWindow =
        desktop().screen.makeWindow({.width = 510, .height = 320, .title = "About Quillery", .isClosable = true});
    aboutWindow->add(Image{{219, 222, 72, 72}, platform().bundle.iconPath()});
    aboutWindow->add(Label{.frame = {24, 66, 462, 146}, .text = aboutText(), .isCentered = true});
    int x = 24;
    for (const AboutButton& button : aboutButtons) {
      aboutWindow->add(PushButton{{x, 20, 150, 32}, button.title, calling(button.command)});
      x += 156;
    }
    aboutWindow->center();
  }
  bringToFront(*aboutWindow);
}

void SorterDelegate::openWebsite() { desktop().workspace.openAddress(std::string(product::webPage)); }

void SorterDelegate::support() {
  desktop().workspace.openAddress("mailto:" + std::string(product::supportAddress) + "?subject=Quillery");
}

void SorterDelegate::openBackups() {
  try {
    createBackupsFolder();
  } catch (const Error& error) {
    alert("Cannot open backups", error.description());
    return;
  }
  desktop().workspace.openFolder(backupsFolder());
}

void SorterDelegate::quit() {
  if (dailyTimer) dailyTimer->invalidate();
  if (quitTimer) quitTimer->invalidate();
  desktop().application.terminate();
}

bool SorterDelegate::applicationShouldTerminate() { return true; }

bool SorterDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/) {
  desktop().mainLoop.post([weak = weak_from_this()] {
    BookmarkPermissionController::shared()->check([weak](bool isGranted) {
      const auto self = weak.lock();
      if (self && !isGranted) self->pauseForAccess();
    });
  });
  return true;
}
