// Sorting needs Safari closed: asking it to quit, waiting for that, sorting, opening it again; and the sort that
// follows a quit by its user. Safari is never forced.
#include <utility>

#include "app/alert.h"
#include "app/probes.h"
#include "app/sorter_delegate.h"
#include "engine/sort_job.h"
#include "platform/platform.h"

namespace {

// The answers to the question about an open Safari, in the order of its buttons.
constexpr std::size_t quitSortAndReopen = 0;
constexpr std::size_t retry = 1;

std::size_t askAboutOpenSafari() {
  return platform().userInterface.runModal(
      {"Safari is open",
       "Quit Safari normally, sort your bookmarks, then reopen Safari. Any Safari save prompt must be resolved before "
       "sorting can continue.",
       {"Quit Safari, Sort & Reopen", "Retry", "Cancel"}});
}

void openSafari() {
  Workspace& workspace = desktop().workspace;
  if (const auto location = workspace.locateApplication(safariIdentifier)) workspace.openApplication(*location);
}

}  // namespace

void SorterDelegate::sortNow() {
  const auto self = shared_from_this();  // while a dialog is open, the last other owner may let go
  std::size_t choice = retry;
  while (choice == retry) {
    if (busy || updateInstallPending) return;
    if (!canReadBookmarks()) {
      pauseForAccess();
      return;
    }
    if (!safariRunning()) {
      busy = true;
      performSort();
      busy = false;
      return;
    }
    choice = askAboutOpenSafari();
  }
  if (choice == quitSortAndReopen) closeSortReopen(false);
}

void SorterDelegate::closeSortReopen(bool quiet) {
  if (busy || updateInstallPending) return;
  if (!canReadBookmarks()) return;
  busy = true;
  const Applications asked = runningSafaris();
  if (asked.empty()) {
    finish(false);
    return;
  }
  for (const auto& safari : asked) {
    ownQuitPIDs.insert(safari->processIdentifier());
    if (!safari->terminate()) ownQuitPIDs.erase(safari->processIdentifier());
  }
  MainLoop& loop = desktop().mainLoop;
  const Instant deadline = loop.now() + quitDeadline;
  quitTimer = loop.repeatingTimer(quitPollInterval, [weak = weak_from_this(), deadline, asked, quiet](Timer& timer) {
    if (const auto self = weak.lock()) {
      self->pollForQuit(timer, deadline, asked, quiet);
    } else {
      timer.invalidate();
    }
  });
}

void SorterDelegate::pollForQuit(Timer& timer, Instant deadline, const Applications& asked, bool quiet) {
  const bool isGone = !safariRunning();
  if (!isGone && desktop().mainLoop.now() < deadline) return;
  timer.invalidate();
  quitTimer = nullptr;
  if (isGone) {
    finish(true);
  } else {
    giveUpQuitting(asked, quiet);
  }
}

void SorterDelegate::giveUpQuitting(const Applications& asked, bool quiet) {
  busy = false;
  // One that quits later on does so because its user resolved its question: a quit of the user's.
  for (const auto& safari : asked) ownQuitPIDs.erase(safari->processIdentifier());
  if (quiet) return;
  alert("Safari did not close",
        "Sorting was skipped. Resolve any Safari save prompts and try again. Safari was not force-quit.");
}

// Unattended even where a dialog began it: its user has answered and is back to other work.
void SorterDelegate::finish(bool safariWasRunning) {
  automatic = true;
  performSort();
  automatic = false;
  if (safariWasRunning) openSafari();
  busy = false;
}

void SorterDelegate::observeTerminations() {
  observers.push_back(desktop().workspace.observeTerminations([weak = weak_from_this()](const auto& application) {
    const auto self = weak.lock();
    if (self && application) self->applicationTerminated(*application);
  }));
}

void SorterDelegate::applicationTerminated(const RunningApplication& application) {
  if (application.bundleIdentifier() != safariIdentifier) return;
  const bool wasOwnQuit = ownQuitPIDs.erase(application.processIdentifier()) > 0;
  if (wasOwnQuit || !enabled || !sortOnQuit() || busy) return;
  desktop().mainLoop.after(sortOnQuitDelay, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->sortAfterQuit();
  });
}

void SorterDelegate::sortAfterQuit() {
  if (sortOnQuit() && !safariRunning()) tick();
}
