#include "engine/safari.h"

#include "platform/platform.h"

namespace {

template <class Question>
auto answerTo(Question question) {
  try {
    return question(platform().runningApplications);
  } catch (const Error& error) {
    throw SafariUnknown(error.domain(), error.code(),
                        "It is unknown whether Safari is running, so your bookmarks have not been changed. Try again "
                        "later. " +
                            error.description());
  }
}

}  // namespace

SafariState safariState() {
  try {
    return safariRunning() ? SafariState::running : SafariState::closed;
  } catch (const SafariUnknown&) {
    return SafariState::unknown;
  }
}

std::vector<std::shared_ptr<RunningApplication>> runningSafaris() {
  return answerTo(
      [](RunningApplications& applications) { return applications.withBundleIdentifier(safariIdentifier); });
}

bool safariRunning() { return !runningSafaris().empty(); }

bool canLookForSafari() {
  return answerTo([](RunningApplications& applications) { return applications.areKnown(); });
}
