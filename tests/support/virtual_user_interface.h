// The person in front of a virtual machine, and what is shown to them.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/user_interface.h"
#include "tests/support/journal.h"

// Noted are "accessory", "activate" and "alert" with the alert's title. An alert that no answer was prepared for
// fails the test, and so does an answer that nothing asked for.
class VirtualUserInterface : public UserInterface {
 public:
  explicit VirtualUserInterface(Journal& journal) : journal_(journal) {}
  ~VirtualUserInterface() override;

  void becomeAccessory() override;
  void activateIgnoringOthers() override;
  std::size_t runModal(const Alert& alert) override;

  // Prepares the answer to the next alert that has none yet: presses the button with this index, after `meanwhile`
  // has changed the machine while the alert was open.
  void willAnswer(std::size_t button, std::function<void()> meanwhile = {});

  // Answers every alert that no answer was prepared for, from now on.
  using Person = std::function<std::size_t(const Alert& alert)>;
  void willAnswerAll(Person person) { person_ = std::move(person); }

  // Every alert so far, whole.
  const std::vector<Alert>& alerts() const { return alerts_; }

 private:
  struct Answer {
    std::size_t button;
    std::function<void()> meanwhile;
  };

  Journal& journal_;
  std::vector<Alert> alerts_;
  std::deque<Answer> answers_;
  Person person_;
};
