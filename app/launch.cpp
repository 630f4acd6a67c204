// What happens once the application has started: status item and menu, updater, observers, and finally the setup, which
// may need the user.
#include "app/sorter_delegate.h"
#include "app/weak_action.h"
#include "platform/platform.h"

void SorterDelegate::applicationDidFinishLaunching() {
  item = desktop().screen.makeStatusItem();
  item->setImage({.name = "bookmark", .accessibilityDescription = "Quillery", .isTemplate = true});
  item->setToolTip(normalToolTip);
  buildMenu();
  observeTerminations();
  observeWake();
  refresh();
  desktop().mainLoop.post([self = shared_from_this()] { self->setUp(); });
}

void SorterDelegate::buildMenu() {
  const auto menu = desktop().screen.makeMenu();
  menu->addItem("About Quillery…", calling(&SorterDelegate::showAbout));
  menu->addSeparator();
  status = menu->addItem("", calling(&SorterDelegate::toggleRunning));
  menu->addItem("Sort Now…", calling(&SorterDelegate::sortNow));
  menu->addItem("Schedule…", calling(&SorterDelegate::showSchedule));
  menu->addSeparator();
  updaterController = desktop().updater.start(weak_from_this());
  updateMenuItem = menu->addItem(normalUpdateTitle, calling(&SorterDelegate::checkForUpdates));
  automaticUpdateMenuItem =
      menu->addItem("Check for Updates Automatically", calling(&SorterDelegate::toggleAutomaticUpdates));
  observeUpdates();
  menu->addItem("Website", calling(&SorterDelegate::openWebsite));
  menu->addSeparator();
  menu->addItem("Quit", calling(&SorterDelegate::quit));
  item->setMenu(menu);
}

Action SorterDelegate::calling(void (SorterDelegate::*command)()) { return weakAction(weak_from_this(), command); }
