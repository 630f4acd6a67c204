// The screen of a virtual machine: every window, menu and status item that the program created, for tests to inspect
// and to use like a user.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/screen.h"
#include "tests/support/journal.h"

// A control of any kind in a window, with its state.
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
  Label label;  // the description of a label

  std::string accessibilityLabel;

  void setAccessibilityLabel(const std::string& newLabel) override { accessibilityLabel = newLabel; }
  bool isOn() const override { return isOnNow; }
  void setOn(bool on) override { isOnNow = on; }
  void setEnabled(bool enabled) override { isEnabledNow = enabled; }
  int tag() const override { return number; }
  std::size_t selectedIndex() const override { return chosen; }
  void select(std::size_t index) override { chosen = index; }
  Instant dateValue() const override { return date; }
  void setDateValue(Instant value) override { date = value; }
};

// Records "center", "show" and "hide" with the window's title.
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
  // The control with this text. Throws if there is none.
  VirtualControl& control(const std::string& text) const;
  // The only control of a kind.
  VirtualControl& only(const std::string& kind) const;

  // What a user does. Disabled controls and hidden windows ignore it. Pressing a check box toggles it.
  void press(const std::string& title);
  void choose(const std::string& item);
  void pressKey(KeyEquivalent key);
  // Presses the close box if the window has one.
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

// The expected properties of a control.
struct WantedControl {
  const char* kind;
  const char* text;
  Frame frame;
  KeyEquivalent key = KeyEquivalent::none;
};

// Expects a window to have exactly these controls, in this order.
void expectControls(const VirtualWindow& window, const std::vector<WantedControl>& wanted);

// Records "title" with the new title, and "enable", "disable", "check" and "uncheck" with the item's title.
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
  // Chooses the item as a user would. A disabled item ignores it.
  void choose();

 private:
  Journal& journal_;
  std::string title_;
  Action action_;
  bool isEnabled_ = true;
  bool isOn_ = false;
};

// Records "item" with the title, "separator", and "autoenable" with "on" or "off".
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
  // The item with this title now. Throws if there is none.
  VirtualMenuItem& item(const std::string& title) const;

 private:
  Journal& journal_;
  std::vector<std::shared_ptr<VirtualMenuItem>> items_;
  bool autoenablesItems_ = true;
};

// Records "image", "tool tip", "display" and "menu".
class VirtualStatusItem : public StatusItem {
 public:
  explicit VirtualStatusItem(Journal& journal) : journal_(journal) {}

  void setImage(const SymbolImage& image) override;
  void setToolTip(const std::string& text) override;
  void setAppearsDisabled(bool appearsDisabled) override { appearsDisabled_ = appearsDisabled; }
  void display() override;
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

// Records "status item", "window" with the title, and what its windows, menus and status items record.
class VirtualScreen : public Screen {
 public:
  explicit VirtualScreen(Journal& journal) : journal_(journal) {}

  std::shared_ptr<StatusItem> makeStatusItem() override;
  std::shared_ptr<Menu> makeMenu() override;
  std::shared_ptr<Window> makeWindow(const WindowDescription& description) override;

  // All windows, hidden or not, in the order of their creation.
  const std::vector<std::shared_ptr<VirtualWindow>>& windows() const { return windows_; }
  // The last window with this title. Throws if there is none.
  VirtualWindow& window(const std::string& title) const;
  // How many windows are visible.
  int visibleWindows() const;
  // The last status item that was created.
  const std::shared_ptr<VirtualStatusItem>& statusItem() const { return statusItem_; }
  VirtualMenu& menu() const;

 private:
  Journal& journal_;
  std::vector<std::shared_ptr<VirtualWindow>> windows_;
  std::shared_ptr<VirtualStatusItem> statusItem_;
};
