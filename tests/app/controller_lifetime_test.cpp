// Timers, observers and posted work hold the controller weakly, so it may be destroyed at any moment.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "app/alert.h"
#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;

class ControllerLifetime : public ControllerTest {
 protected:
  ControllerLifetime() { launch(); }

  // Drops the last reference. No pending timer or observer may keep the controller alive.
  void destroyController() {
    const std::weak_ptr<SorterDelegate> controller = controller_;
    controller_.reset();
    EXPECT_TRUE(controller.expired());
    noted();
  }
};

TEST_F(ControllerLifetime, endsWhileTheDailyTimerIsArmed) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  destroyController();
  machine_.loop.advance(24h);
  EXPECT_THAT(noted(), IsEmpty());
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(ControllerLifetime, endsWhileItWaitsForSafariToQuit) {
  startSafari({.quitsAfter = 2s});
  controller_->closeSortReopen(true);
  machine_.loop.advance(1s);
  destroyController();
  machine_.loop.advance(60s);
  EXPECT_EQ(noted(), Entries{"invalidate every 250 ms"}) << "nothing is sorted or opened";
  EXPECT_EQ(safaris(), 0);
}

TEST_F(ControllerLifetime, endsWithinTheSecondAfterSafariQuits) {
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(500ms);
  destroyController();
  machine_.loop.advance(60s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(ControllerLifetime, endsBeforeItObservesThatSafariQuit) {
  const auto observers = controller_->observers;  // as if the system were just calling them
  destroyController();
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(60s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(ControllerLifetime, endsBeforeItObservesAWake) {
  const auto observers = controller_->observers;
  destroyController();
  machine_.sleep(1h);
  machine_.loop.run();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(ControllerLifetime, stopsObservingWhenItEnds) {
  destroyController();
  startSafari();
  machine_.applications.end(safari);
  machine_.sleep(1h);
  machine_.loop.advance(60s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(ControllerLifetime, endsWhileAnUpdateWaits) {
  startSafari({.quitsAfter = 2s});
  controller_->closeSortReopen(true);
  controller_->shouldPostponeRelaunch([] { FAIL(); });
  destroyController();
  machine_.loop.advance(60s);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

// The controller is released while one of its own functions shows a dialog: that function must finish first.
class ControllerLifetimeInADialog : public ControllerLifetime {
 protected:
  std::function<void()> releaseTheController() {
    return [this] {
      const std::weak_ptr<SorterDelegate> controller = controller_;
      controller_.reset();
      machine_.loop.advance(60s);
      EXPECT_FALSE(controller.expired()) << "its function has not returned yet";
    };
  }
};

TEST_F(ControllerLifetimeInADialog, endsWhileTheSafariQuestionIsOpen) {
  startSafari();
  const std::weak_ptr<SorterDelegate> controller = controller_;
  machine_.userInterface.willAnswer(0, releaseTheController());
  controller_->sortNow();
  EXPECT_TRUE(controller.expired());
  machine_.loop.advance(60s);
  EXPECT_EQ(sorts(), 0) << "the poll for Safari finds the controller gone";
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(ControllerLifetimeInADialog, endsWhileTheResultIsShown) {
  const std::weak_ptr<SorterDelegate> controller = controller_;
  machine_.userInterface.willAnswer(0, releaseTheController());
  controller_->sortNow();
  EXPECT_TRUE(controller.expired());
  EXPECT_TRUE(isSorted());
}

TEST_F(ControllerLifetimeInADialog, endsWhileTheFailureIsShown) {
  startSafari({.quitsAfter = std::nullopt});
  controller_->closeSortReopen(false);
  const std::weak_ptr<SorterDelegate> controller = controller_;
  machine_.userInterface.willAnswer(0, releaseTheController());
  machine_.loop.advance(45s);
  EXPECT_TRUE(controller.expired());
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(ControllerLifetimeInADialog, endsWhileChooseADayIsShown) {
  const std::weak_ptr<SorterDelegate> controller = controller_;
  machine_.userInterface.willAnswer(0, releaseTheController());
  saveSchedule({true, {}, true, machine_.loop.now()});
  EXPECT_TRUE(controller.expired());
}

}  // namespace
