// A sort needs Safari closed. This file quits Safari, waits, sorts and opens Safari again; and it sorts after the user
// quits Safari. Safari is never force-quit.
#include <utility>

#include "app/alert.h"
#include "app/flag_scope.h"
#include "app/perform_sort.h"
#include "app/sorter_delegate.h"
#include "engine/bookmark_file.h"
#include "engine/safari.h"
#include "platform/platform.h"
#include "schedule/schedule_settings.h"

namespace {

// The indices of the buttons of the question about an open Safari.
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

// Returns none if that is unknown. The sort asks again, and reports it.
std::vector<std::shared_ptr<RunningApplication>> safarisKnownToRun() {
  try {
    return runningSafaris();
  } catch (const SafariUnknown&) {
    return {};
  }
}

}  // namespace

void SorterDelegate::sortNow() {
  const auto self = shared_from_this();  // the last other owner may release it while a dialog is open
  std::size_t choice = retry;
  while (choice == retry) {
    if (busy || updateInstallPending) return;
    if (!canReadBookmarks()) {
      pauseForAccess();
      return;
    }
    if (safariState() != SafariState::running) {
      const FlagScope sorting(busy);
      sort();  // asks again, and reports if it is unknown
      return;
    }
    choice = askAboutOpenSafari();
  }
  if (choice == quitSortAndReopen) closeSortReopen(false);
}

void SorterDelegate::closeSortReopen(bool quiet) {
  if (busy || updateInstallPending) return;
  if (!canReadBookmarks()) return;
  FlagScope sorting(busy);
  const Applications asked = safarisKnownToRun();
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
  sorting.release();  // the sequence goes on until the timer finds Safari closed or gives up
}

void SorterDelegate::pollForQuit(Timer& timer, Instant deadline, const Applications& asked, bool quiet) {
  const SafariState safari = safariState();
  if (safari != SafariState::closed && desktop().mainLoop.now() < deadline) return;
  timer.invalidate();
  quitTimer = nullptr;
  // An instance that quits later does so because the user answered its question, so it counts as the user's quit.
  if (safari != SafariState::closed)
    for (const auto& application : asked) ownQuitPIDs.erase(application->processIdentifier());
  if (safari == SafariState::running) {
    giveUpQuitting(quiet);
  } else {
    const FlagScope sorting(busy);
    finish(true);
  }
}

void SorterDelegate::giveUpQuitting(bool quiet) {
  busy = false;
  if (quiet) return;
  alert("Safari did not close",
        "Sorting was skipped. Resolve any Safari save prompts and try again. Safari was not force-quit.");
}

// Unattended even if the user started the sequence from a dialog: the user is back at other work by now.
void SorterDelegate::finish(bool safariWasRunning) {
  {
    const FlagScope unattended(automatic);
    sort();
  }
  if (safariWasRunning) openSafari();
}

bool SorterDelegate::sortOnQuit() const { return sortsOnSafariQuit(); }

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
  if (sortOnQuit() && safariState() != SafariState::running) tick();
}
