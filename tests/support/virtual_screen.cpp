#include "tests/support/virtual_screen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

// The last of `things` that matches. Throws if there is none.
template <class Things, class Predicate>
auto& last(const Things& things, Predicate matches, const std::string& what) {
  for (auto thing = things.rbegin(); thing != things.rend(); ++thing)
    if (*thing && matches(**thing)) return **thing;
  throw std::logic_error("there is no " + what);
}

}  // namespace

std::shared_ptr<VirtualControl> VirtualWindow::add(const std::string& kind, const Frame& frame,
                                                   const std::string& text) {
  auto control = std::make_shared<VirtualControl>();
  control->kind = kind;
  control->frame = frame;
  control->text = text;
  controls_.push_back(control);
  return control;
}

std::shared_ptr<Button> VirtualWindow::add(const PushButton& button) {
  const auto control = add("push button", button.frame, button.title);
  control->action = button.action;
  control->key = button.key;
  return control;
}

std::shared_ptr<Button> VirtualWindow::add(const CheckBox& checkBox) {
  const auto control = add("check box", checkBox.frame, checkBox.title);
  control->action = checkBox.action;
  control->number = checkBox.tag;
  return control;
}

std::shared_ptr<PopUpButton> VirtualWindow::add(const PopUp& popUp) {
  const auto control = add("pop-up", popUp.frame, "");
  control->action = popUp.action;
  control->items = popUp.items;
  return control;
}

std::shared_ptr<DatePicker> VirtualWindow::addTimePicker(const Frame& frame) { return add("time picker", frame, ""); }

void VirtualWindow::add(const Label& label) { add("label", label.frame, label.text)->label = label; }

void VirtualWindow::add(const Image& image) { add("image", image.frame, image.path); }

void VirtualWindow::center() {
  journal_.perform("center", description_.title, [&] { isCentered_ = true; });
}

void VirtualWindow::makeKeyAndOrderFront() {
  journal_.perform("show", description_.title, [&] { isVisible_ = true; });
}

void VirtualWindow::orderOut() {
  journal_.perform("hide", description_.title, [&] { isVisible_ = false; });
}

VirtualControl& VirtualWindow::control(const std::string& text) const {
  return last(
      controls_, [&](const VirtualControl& control) { return control.text == text; }, "control “" + text + "”");
}

VirtualControl& VirtualWindow::only(const std::string& kind) const {
  return last(
      controls_, [&](const VirtualControl& control) { return control.kind == kind; }, kind);
}

void VirtualWindow::use(VirtualControl& control) {
  if (!isVisible_ || !control.isEnabledNow) return;
  if (control.kind == "check box") control.isOnNow = !control.isOnNow;
  // Copy the action, because it may destroy the window.
  const Action action = control.action;
  if (action) action();
}

void VirtualWindow::press(const std::string& title) { use(control(title)); }

void VirtualWindow::choose(const std::string& item) {
  VirtualControl& popUp = only("pop-up");
  const auto found = std::ranges::find(popUp.items, item);
  if (found == popUp.items.end()) throw std::logic_error("there is no item “" + item + "”");
  if (!isVisible_ || !popUp.isEnabledNow) return;
  popUp.chosen = static_cast<std::size_t>(found - popUp.items.begin());
  use(popUp);
}

void VirtualWindow::pressKey(KeyEquivalent key) {
  for (const auto& control : controls_)
    if (control->key == key) return use(*control);
}

void VirtualWindow::close() {
  if (description_.isClosable) isVisible_ = false;
}

void expectControls(const VirtualWindow& window, const std::vector<WantedControl>& wanted) {
  ASSERT_EQ(window.controls().size(), wanted.size());
  for (std::size_t index = 0; index < wanted.size(); ++index) {
    const VirtualControl& control = *window.controls()[index];
    EXPECT_EQ(control.kind, wanted[index].kind) << index;
    EXPECT_EQ(control.text, wanted[index].text) << index;
    EXPECT_EQ(control.frame, wanted[index].frame) << wanted[index].text;
    EXPECT_EQ(control.key, wanted[index].key) << wanted[index].text;
  }
}

void VirtualMenuItem::setTitle(const std::string& title) {
  journal_.perform("title", title, [&] { title_ = title; });
}

void VirtualMenuItem::setEnabled(bool enabled) {
  journal_.perform(enabled ? "enable" : "disable", title_, [&] { isEnabled_ = enabled; });
}

void VirtualMenuItem::setOn(bool on) {
  journal_.perform(on ? "check" : "uncheck", title_, [&] { isOn_ = on; });
}

void VirtualMenuItem::choose() {
  if (isEnabled_ && action_) action_();
}

std::shared_ptr<MenuItem> VirtualMenu::addItem(const std::string& title, Action action) {
  return journal_.perform("item", title, [&] {
    items_.push_back(std::make_shared<VirtualMenuItem>(journal_, title, std::move(action)));
    return items_.back();
  });
}

void VirtualMenu::addSeparator() {
  journal_.perform("separator", {}, [&] { items_.push_back(nullptr); });
}

void VirtualMenu::setAutoenablesItems(bool autoenables) {
  journal_.perform("autoenable", autoenables ? "on" : "off", [&] { autoenablesItems_ = autoenables; });
}

std::vector<std::string> VirtualMenu::titles() const {
  std::vector<std::string> titles;
  for (const auto& item : items_) titles.push_back(item ? item->title() : "-");
  return titles;
}

VirtualMenuItem& VirtualMenu::item(const std::string& title) const {
  return last(
      items_, [&](const VirtualMenuItem& item) { return item.title() == title; }, "item “" + title + "”");
}

void VirtualStatusItem::setImage(const SymbolImage& image) {
  journal_.perform("image", image.name, [&] { image_ = image; });
}

void VirtualStatusItem::setToolTip(const std::string& text) {
  journal_.perform("tool tip", text, [&] { toolTip_ = text; });
}

void VirtualStatusItem::display() {
  journal_.perform("display", toolTip_, [] {});
}

void VirtualStatusItem::setMenu(std::shared_ptr<Menu> menu) {
  journal_.perform("menu", {}, [&] { menu_ = std::move(menu); });
}

std::shared_ptr<StatusItem> VirtualScreen::makeStatusItem() {
  return journal_.perform("status item", {},
                          [&] { return statusItem_ = std::make_shared<VirtualStatusItem>(journal_); });
}

std::shared_ptr<Menu> VirtualScreen::makeMenu() { return std::make_shared<VirtualMenu>(journal_); }

std::shared_ptr<Window> VirtualScreen::makeWindow(const WindowDescription& description) {
  return journal_.perform("window", description.title, [&] {
    windows_.push_back(std::make_shared<VirtualWindow>(journal_, description));
    return windows_.back();
  });
}

VirtualWindow& VirtualScreen::window(const std::string& title) const {
  return last(
      windows_, [&](const VirtualWindow& window) { return window.description().title == title; },
      "window “" + title + "”");
}

int VirtualScreen::visibleWindows() const {
  return static_cast<int>(std::ranges::count_if(windows_, &VirtualWindow::isVisible));
}

VirtualMenu& VirtualScreen::menu() const { return dynamic_cast<VirtualMenu&>(*statusItem_->menu()); }
