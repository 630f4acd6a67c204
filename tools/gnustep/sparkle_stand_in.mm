// A stand-in for Sparkle: it stores its delegates and what it is asked for, and never looks for updates.
#import <Sparkle/Sparkle.h>

@implementation SPUUserUpdateState
@end

@implementation SPUUpdater
@end

@implementation SPUStandardUpdaterController {
  SPUUpdater* updater_;
  __unsafe_unretained id updaterDelegate_;
  __unsafe_unretained id userDriverDelegate_;
  int checks_;
}

static __unsafe_unretained SPUStandardUpdaterController* lastController;

- (instancetype)initWithStartingUpdater:(BOOL)__unused starts
                        updaterDelegate:(id<SPUUpdaterDelegate>)updaterDelegate
                     userDriverDelegate:(id<SPUStandardUserDriverDelegate>)userDriverDelegate {
  self = [super init];
  if (self != nil) {
    updater_ = [[SPUUpdater alloc] init];
    updaterDelegate_ = updaterDelegate;
    userDriverDelegate_ = userDriverDelegate;
    lastController = self;
  }
  return self;
}

- (void)dealloc {
  if (lastController == self) lastController = nil;
}

+ (SPUStandardUpdaterController*)last {
  return lastController;
}

- (SPUUpdater*)updater {
  return updater_;
}

- (id<SPUUpdaterDelegate>)updaterDelegate {
  return updaterDelegate_;
}

- (id<SPUStandardUserDriverDelegate>)userDriverDelegate {
  return userDriverDelegate_;
}

- (int)checks {
  return checks_;
}

- (void)checkForUpdates:(id)__unused sender {
  ++checks_;
}

@end
