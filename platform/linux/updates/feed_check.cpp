#include "platform/linux/updates/feed_check.h"

#include <utility>

#include "platform/error.h"

FeedCheck::FeedCheck(UpdateTools& tools, const std::optional<std::string>& skipped, Finished finished)
    : tools_(tools), wish_{tools.ownVersion, tools.system, skipped}, finished_(std::move(finished)) {
  request_ = tools_.packages.findOwn([this](const OwnPackage& own) {
    if (!own.hasRepository) return readFeed();
    CheckOutcome outcome;
    outcome.isKeptByRepository = true;
    finish(outcome);
  });
}

void FeedCheck::readFeed() {
  if (!tools_.source.mayRead(tools_.source.feedAddress))
    return finishReading("The address of the list of updates is not secure.");
  transfer_ =
      tools_.network.get(tools_.source.feedAddress,
                         {.mayFollowTo = [this](const std::string& address) { return tools_.source.mayRead(address); },
                          .received = [this](std::string_view bytes) { return receive(bytes); },
                          .finished = [this](const std::optional<std::string>& failure) { finishReading(failure); }});
}

bool FeedCheck::receive(std::string_view bytes) {
  feed_ += bytes;
  if (feed_.size() <= largestAppcast) return true;
  finishReading(std::nullopt);  // which finds it too large
  return false;
}

void FeedCheck::finishReading(const std::optional<std::string>& failure) {
  CheckOutcome outcome;
  outcome.failure = failure;
  try {
    if (!failure) outcome.choice = choose(readAppcast(feed_), wish_);
  } catch (const Error& error) {
    outcome.failure = error.description();
  }
  finish(outcome);
}

void FeedCheck::finish(const CheckOutcome& outcome) {
  const Finished finished = std::move(finished_);  // it may destroy this
  finished(outcome);
}
