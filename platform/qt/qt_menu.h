// Menus on Qt.
#pragma once

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <memory>
#include <string>

#include "platform/menu.h"

// May outlive its menu: then setters have no effect on the screen.
class QtMenuItem : public MenuItem {
 public:
  QtMenuItem(QAction* action, const std::string& title);

  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override;
  void setEnabled(bool enabled) override;
  void setOn(bool on) override;

 private:
  QPointer<QAction> action_;
  std::string title_;
};

// A QApplication must exist. The loop runs an item's action after the menu has closed, so that the action may show a
// dialog even if another program displays the menu.
class QtMenu : public Menu {
 public:
  std::shared_ptr<MenuItem> addItem(const std::string& title, Action action) override;
  void addSeparator() override;

  // Only stores the value: Qt never decides which items are enabled.
  void setAutoenablesItems(bool autoenables) override { autoenablesItems_ = autoenables; }
  bool autoenablesItems() const { return autoenablesItems_; }

  QMenu& menu() { return menu_; }

 private:
  QMenu menu_;
  bool autoenablesItems_ = true;
};
