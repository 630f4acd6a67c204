// The menu of a virtual machine.
#pragma once

#include <memory>
#include <string>

#include "platform/menu.h"
#include "tests/support/journal.h"

// Noted are "title", "enable" and "disable", the last two with the item's title.
class VirtualMenuItem : public MenuItem {
 public:
  explicit VirtualMenuItem(Journal& journal) : journal_(journal) {}

  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override;
  void setEnabled(bool enabled) override;

  bool isEnabled() const { return isEnabled_; }

 private:
  Journal& journal_;
  std::string title_;
  bool isEnabled_ = false;
};

// Noted is "autoenable" with "on" or "off".
class VirtualMenu : public Menu {
 public:
  explicit VirtualMenu(Journal& journal) : journal_(journal) {}

  void setAutoenablesItems(bool autoenables) override;
  bool autoenablesItems() const { return autoenablesItems_; }

 private:
  Journal& journal_;
  bool autoenablesItems_ = true;
};

class VirtualStatusItem : public StatusItem {
 public:
  explicit VirtualStatusItem(std::shared_ptr<Menu> menu) : menu_(std::move(menu)) {}
  std::shared_ptr<Menu> menu() const override { return menu_; }

 private:
  std::shared_ptr<Menu> menu_;
};
