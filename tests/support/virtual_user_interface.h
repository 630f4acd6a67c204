// The dialogs of a virtual machine and the user who answers them.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/user_interface.h"
#include "tests/support/journal.h"

// Records "accessory", "activate" and "alert" with the alert's title. An alert without a prepared answer fails the
// test, and so does an answer that is never used.
class VirtualUserInterface : public UserInterface {
 public:
  explicit VirtualUserInterface(Journal& journal) : journal_(journal) {}
  ~VirtualUserInterface() override;

  void becomeAccessory() override;
  void activateIgnoringOthers() override;
  std::size_t runModal(const Alert& alert) override;

  // Prepares an answer to the next alert without one: runs `meanwhile` while the alert is open, then presses the button
  // with this index.
  void willAnswer(std::size_t button, std::function<void()> meanwhile = {});

  // From now on, answers every alert without a prepared answer.
  using User = std::function<std::size_t(const Alert& alert)>;
  void willAnswerAll(User user) { user_ = std::move(user); }

  // All alerts so far.
  const std::vector<Alert>& alerts() const { return alerts_; }

 private:
  struct Answer {
    std::size_t button;
    std::function<void()> meanwhile;
  };

  Journal& journal_;
  std::vector<Alert> alerts_;
  std::deque<Answer> answers_;
  User user_;
};
