// The screen of a virtual machine: every window, menu and status item that the program made, for a test to read and use
// as a person would.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/screen.h"
#include "tests/support/journal.h"

// One thing in a window, of whatever kind, with all that is known of it.
struct VirtualControl : Button, PopUpButton, DatePicker {
  std::string kind;  // "push button", "check box", "pop-up", "time picker", "label", "image"
  Frame frame;
  std::string text;  // a button's title, a label's text, an image's path
  std::vector<std::string> items;
  Action action;
  KeyEquivalent key = KeyEquivalent::none;
  int number = 0;
  bool isEnabledNow = true;
  bool isOnNow = false;
  std::size_t chosen = 0;
  Instant date;
  Label label;  // a label, as it was described

  bool isOn() const override { return isOnNow; }
  void setOn(bool on) override { isOnNow = on; }
  void setEnabled(bool enabled) override { isEnabledNow = enabled; }
  int tag() const override { return number; }
  std::size_t selectedIndex() const override { return chosen; }
  void select(std::size_t index) override { chosen = index; }
  Instant dateValue() const override { return date; }
  void setDateValue(Instant value) override { date = value; }
};

// Noted are "center", "show" and "hide" with the window's title.
class VirtualWindow : public Window {
 public:
  VirtualWindow(Journal& journal, WindowDescription description)
      : journal_(journal), description_(std::move(description)) {}

  std::shared_ptr<Button> add(const PushButton& button) override;
  std::shared_ptr<Button> add(const CheckBox& checkBox) override;
  std::shared_ptr<PopUpButton> add(const PopUp& popUp) override;
  std::shared_ptr<DatePicker> addTimePicker(const Frame& frame) override;
  void add(const Label& label) override;
  void add(const Image& image) override;
  void center() override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;

  const WindowDescription& description() const { return description_; }
  bool isVisible() const { return isVisible_; }
  bool isCentered() const { return isCentered_; }
  const std::vector<std::shared_ptr<VirtualControl>>& controls() const { return controls_; }
  // The one control with this text; the test fails if there is none.
  VirtualControl& control(const std::string& text) const;
  // The one control of a kind.
  VirtualControl& only(const std::string& kind) const;

  // What a person does. Nothing happens to what is disabled or hidden. Pressing a check box changes it.
  void press(const std::string& title);
  void choose(const std::string& item);
  void pressKey(KeyEquivalent key);
  // Presses the close box, where there is one.
  void close();

 private:
  std::shared_ptr<VirtualControl> add(const std::string& kind, const Frame& frame, const std::string& text);
  void use(VirtualControl& control);

  Journal& journal_;
  WindowDescription description_;
  std::vector<std::shared_ptr<VirtualControl>> controls_;
  bool isVisible_ = false;
  bool isCentered_ = false;
};

// What a control is to be.
struct WantedControl {
  const char* kind;
  const char* text;
  Frame frame;
  KeyEquivalent key = KeyEquivalent::none;
};

// Expects a window to hold just these, in this order.
void expectControls(const VirtualWindow& window, const std::vector<WantedControl>& wanted);

// Noted are "title", "enable" and "disable", "check" and "uncheck", the last four with the item's title.
class VirtualMenuItem : public MenuItem {
 public:
  VirtualMenuItem(Journal& journal, std::string title, Action action)
      : journal_(journal), title_(std::move(title)), action_(std::move(action)) {}

  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override;
  void setEnabled(bool enabled) override;
  void setOn(bool on) override;

  bool isEnabled() const { return isEnabled_; }
  bool isOn() const { return isOn_; }
  // What a person does; nothing happens to an item that is disabled.
  void choose();

 private:
  Journal& journal_;
  std::string title_;
  Action action_;
  bool isEnabled_ = true;
  bool isOn_ = false;
};

// Noted are "item" with the title, "separator", and "autoenable" with "on" or "off".
class VirtualMenu : public Menu {
 public:
  explicit VirtualMenu(Journal& journal) : journal_(journal) {}

  std::shared_ptr<MenuItem> addItem(const std::string& title, Action action) override;
  void addSeparator() override;
  void setAutoenablesItems(bool autoenables) override;

  bool autoenablesItems() const { return autoenablesItems_; }
  // The items from the top; null for a separator.
  const std::vector<std::shared_ptr<VirtualMenuItem>>& items() const { return items_; }
  // Their titles now; "-" for a separator.
  std::vector<std::string> titles() const;
  // The item with this title now; the test fails if there is none.
  VirtualMenuItem& item(const std::string& title) const;

 private:
  Journal& journal_;
  std::vector<std::shared_ptr<VirtualMenuItem>> items_;
  bool autoenablesItems_ = true;
};

// Noted are "image", "tool tip" and "menu".
class VirtualStatusItem : public StatusItem {
 public:
  explicit VirtualStatusItem(Journal& journal) : journal_(journal) {}

  void setImage(const SymbolImage& image) override;
  void setToolTip(const std::string& text) override;
  void setAppearsDisabled(bool appearsDisabled) override { appearsDisabled_ = appearsDisabled; }
  void setMenu(std::shared_ptr<Menu> menu) override;
  std::shared_ptr<Menu> menu() const override { return menu_; }

  const SymbolImage& image() const { return image_; }
  const std::string& toolTip() const { return toolTip_; }
  std::optional<bool> appearsDisabled() const { return appearsDisabled_; }

 private:
  Journal& journal_;
  SymbolImage image_;
  std::string toolTip_;
  std::optional<bool> appearsDisabled_;  // absent: never set
  std::shared_ptr<Menu> menu_;
};

// Noted are "status item", "window" with the title, and what its things note.
class VirtualScreen : public Screen {
 public:
  explicit VirtualScreen(Journal& journal) : journal_(journal) {}

  std::shared_ptr<StatusItem> makeStatusItem() override;
  std::shared_ptr<Menu> makeMenu() override;
  std::shared_ptr<Window> makeWindow(const WindowDescription& description) override;

  // Every one that was made, hidden or not, in the order of their making.
  const std::vector<std::shared_ptr<VirtualWindow>>& windows() const { return windows_; }
  // The last one with this title; the test fails if there is none.
  VirtualWindow& window(const std::string& title) const;
  // How many windows are on the screen.
  int visibleWindows() const;
  // The last one that was made.
  const std::shared_ptr<VirtualStatusItem>& statusItem() const { return statusItem_; }
  VirtualMenu& menu() const;

 private:
  Journal& journal_;
  std::vector<std::shared_ptr<VirtualWindow>> windows_;
  std::shared_ptr<VirtualStatusItem> statusItem_;
};
