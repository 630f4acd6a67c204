#include "platform/macos/desktop/sparkle_updater.h"

#import <Sparkle/Sparkle.h>

#include <utility>

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/callback.h"

namespace {

NSString* const canCheckKey = @"canCheckForUpdates";

}  // namespace

// Forwards Sparkle's messages to the delegate. Without a living delegate, Sparkle performs its default action.
@interface SparkleForwarder : NSObject <SPUUpdaterDelegate, SPUStandardUserDriverDelegate>
- (instancetype)initWithDelegate:(const std::weak_ptr<UpdaterDelegate>&)delegate;
@end

@implementation SparkleForwarder {
  std::weak_ptr<UpdaterDelegate> delegate_;
}

- (instancetype)initWithDelegate:(const std::weak_ptr<UpdaterDelegate>&)delegate {
  self = [super init];
  if (self != nil) delegate_ = delegate;
  return self;
}

- (BOOL)supportsGentleScheduledUpdateReminders {
  return callBack([&] {
    const auto delegate = delegate_.lock();
    return delegate && delegate->supportsGentleScheduledUpdateReminders();
  });
}

// Without this method, Sparkle itself decides when to open its window for an update that a scheduled check has found:
// at once for a program that has just been launched, otherwise behind other windows.
- (BOOL)standardUserDriverShouldHandleShowingScheduledUpdate:(SUAppcastItem*)__unused update
                                         andInImmediateFocus:(BOOL)immediateFocus {
  return callBack([&] {
    const auto delegate = delegate_.lock();
    return !delegate || delegate->standardUserDriverShouldHandleShowingScheduledUpdate(immediateFocus);
  });
}

- (void)standardUserDriverWillHandleShowingUpdate:(BOOL)__unused handleShowingUpdate
                                        forUpdate:(SUAppcastItem*)__unused update
                                            state:(SPUUserUpdateState*)state {
  callBack([&] {
    if (const auto delegate = delegate_.lock())
      delegate->standardUserDriverWillHandleShowingUpdate(state.userInitiated);
  });
}

- (void)standardUserDriverDidReceiveUserAttentionForUpdate:(SUAppcastItem*)__unused update {
  callBack([&] {
    if (const auto delegate = delegate_.lock()) delegate->standardUserDriverDidReceiveUserAttention();
  });
}

- (void)standardUserDriverWillFinishUpdateSession {
  callBack([&] {
    if (const auto delegate = delegate_.lock()) delegate->standardUserDriverWillFinishUpdateSession();
  });
}

- (BOOL)updater:(SPUUpdater*)__unused updater
    shouldPostponeRelaunchForUpdate:(SUAppcastItem*)__unused item
                 untilInvokingBlock:(void (^)(void))installHandler {
  return callBack([&] {
    const auto delegate = delegate_.lock();
    return delegate && delegate->shouldPostponeRelaunch([installHandler] { installHandler(); });
  });
}

@end

// Calls its handler for each change of the value that it observes.
@interface CanCheckObserver : NSObject
- (instancetype)initWithHandler:(std::function<void()>)handler;
@end

@implementation CanCheckObserver {
  std::function<void()> handler_;
}

- (instancetype)initWithHandler:(std::function<void()>)handler {
  self = [super init];
  if (self != nil) handler_ = std::move(handler);
  return self;
}

- (void)observeValueForKeyPath:(NSString*)__unused keyPath
                      ofObject:(id)__unused object
                        change:(NSDictionary<NSKeyValueChangeKey, id>*)__unused change
                       context:(void*)__unused context {
  const auto handler = handler_;  // the handler may destroy this object
  callBack(handler);
}

@end

namespace {

class CanCheckObservation {
 public:
  CanCheckObservation(SPUUpdater* updater, std::function<void()> handler)
      : updater_(updater), observer_([[CanCheckObserver alloc] initWithHandler:std::move(handler)]) {
    [updater_ addObserver:observer_
               forKeyPath:canCheckKey
                  options:NSKeyValueObservingOptionInitial | NSKeyValueObservingOptionNew
                  context:nullptr];
  }
  ~CanCheckObservation() { [updater_ removeObserver:observer_ forKeyPath:canCheckKey]; }
  CanCheckObservation(const CanCheckObservation&) = delete;
  CanCheckObservation& operator=(const CanCheckObservation&) = delete;

 private:
  SPUUpdater* updater_;
  CanCheckObserver* observer_;
};

class SparkleController : public UpdaterController {
 public:
  explicit SparkleController(const std::weak_ptr<UpdaterDelegate>& delegate)
      : forwarder_([[SparkleForwarder alloc] initWithDelegate:delegate]),
        controller_([[SPUStandardUpdaterController alloc] initWithStartingUpdater:YES
                                                                  updaterDelegate:forwarder_
                                                               userDriverDelegate:forwarder_]) {}

  bool automaticallyChecksForUpdates() const override { return controller_.updater.automaticallyChecksForUpdates; }
  void setAutomaticallyChecksForUpdates(bool checks) override {
    controller_.updater.automaticallyChecksForUpdates = checks;
  }

  bool canCheckForUpdates() const override { return controller_.updater.canCheckForUpdates; }

  Observation observeCanCheckForUpdates(std::function<void()> handler) override {
    return std::make_shared<CanCheckObservation>(controller_.updater, std::move(handler));
  }

  void checkForUpdates() override { [controller_ checkForUpdates:nil]; }

 private:
  SparkleForwarder* forwarder_;  // Sparkle keeps weak references
  SPUStandardUpdaterController* controller_;
};

}  // namespace

std::shared_ptr<UpdaterController> SparkleUpdater::start(const std::weak_ptr<UpdaterDelegate>& delegate) {
  return raisingErrors([&] { return std::make_shared<SparkleController>(delegate); });
}
