#include "tests/support/virtual_user_interface.h"

#include <gtest/gtest.h>

#include <utility>

VirtualUserInterface::~VirtualUserInterface() {
  EXPECT_TRUE(answers_.empty()) << answers_.size() << " prepared answers to alerts that were never shown";
}

void VirtualUserInterface::becomeAccessory() {
  journal_.perform("accessory", {}, [] {});
}

void VirtualUserInterface::activateIgnoringOthers() {
  journal_.perform("activate", {}, [] {});
}

std::size_t VirtualUserInterface::runModal(const Alert& alert) {
  return journal_.perform("alert", alert.messageText, [&]() -> std::size_t {
    alerts_.push_back(alert);
    if (answers_.empty() && user_) return user_(alert);
    if (answers_.empty()) {
      ADD_FAILURE() << "an unexpected alert: " << alert.messageText << ": " << alert.informativeText;
      return alert.buttons.empty() ? 0 : alert.buttons.size() - 1;  // cancels, so that no question repeats for ever
    }
    const Answer answer = std::move(answers_.front());
    answers_.pop_front();
    if (answer.meanwhile) answer.meanwhile();
    return answer.button;
  });
}

void VirtualUserInterface::willAnswer(std::size_t button, std::function<void()> meanwhile) {
  answers_.push_back({button, std::move(meanwhile)});
}
