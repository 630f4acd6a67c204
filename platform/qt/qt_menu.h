// A menu of Qt's.
#pragma once

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <memory>
#include <string>

#include "platform/menu.h"

// An item outlives its menu, but then nothing comes of what it is told.
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

// There must be a QApplication. An item's action runs from the loop once the menu is closed, so that it may show a
// dialog even if the menu was another program's picture of this one.
class QtMenu : public Menu {
 public:
  std::shared_ptr<MenuItem> addItem(const std::string& title, Action action) override;
  void addSeparator() override;

  // It is remembered, but Qt never decides which items are enabled.
  void setAutoenablesItems(bool autoenables) override { autoenablesItems_ = autoenables; }
  bool autoenablesItems() const { return autoenablesItems_; }

  QMenu& menu() { return menu_; }

 private:
  QMenu menu_;
  bool autoenablesItems_ = true;
};
