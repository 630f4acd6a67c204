#include "tests/support/virtual_menu.h"

void VirtualMenuItem::setTitle(const std::string& title) {
  journal_.perform("title", title, [&] { title_ = title; });
}

void VirtualMenuItem::setEnabled(bool enabled) {
  journal_.perform(enabled ? "enable" : "disable", title_, [&] { isEnabled_ = enabled; });
}

void VirtualMenu::setAutoenablesItems(bool autoenables) {
  journal_.perform("autoenable", autoenables ? "on" : "off", [&] { autoenablesItems_ = autoenables; });
}
