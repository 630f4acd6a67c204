// One look at the feed of updates.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/updates/update_choice.h"
#include "platform/linux/updates/update_tools.h"

struct CheckOutcome {
  std::optional<std::string> failure;  // a sentence for the user
  bool isKeptByRepository = false;     // the system's repository keeps the program current, so the feed was not read
  UpdateChoice choice;
};

// A check in progress. Destroying it cancels it.
class FeedCheck {
 public:
  // Called once, by the event loop. May destroy the check.
  using Finished = std::function<void(const CheckOutcome&)>;

  // Starts the check. The tools must outlive it. A check that the user requested offers a skipped version, too.
  FeedCheck(UpdateTools& tools, const std::optional<std::string>& skipped, Finished finished);

 private:
  void readFeed();
  bool receive(std::string_view bytes);
  void finishReading(const std::optional<std::string>& failure);
  void finish(const CheckOutcome& outcome);

  UpdateTools& tools_;
  UpdateWish wish_;
  Finished finished_;
  std::string feed_;
  PackageRequest request_;
  std::unique_ptr<Transfer> transfer_;
};
