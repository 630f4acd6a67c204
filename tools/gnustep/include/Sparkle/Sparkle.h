// The part of Sparkle that the program uses. sparkle_stand_in.mm implements it.
#pragma once

#import <Foundation/Foundation.h>

@class SPUUpdater;
@class SUAppcastItem;

@interface SPUUserUpdateState : NSObject
@property(nonatomic) BOOL userInitiated;
@end

@protocol SPUUpdaterDelegate <NSObject>
@optional
- (BOOL)updater:(SPUUpdater*)updater
    shouldPostponeRelaunchForUpdate:(SUAppcastItem*)item
                 untilInvokingBlock:(void (^)(void))installHandler;
@end

@protocol SPUStandardUserDriverDelegate <NSObject>
@optional
@property(nonatomic, readonly) BOOL supportsGentleScheduledUpdateReminders;
- (BOOL)standardUserDriverShouldHandleShowingScheduledUpdate:(SUAppcastItem*)update
                                         andInImmediateFocus:(BOOL)immediateFocus;
- (void)standardUserDriverWillHandleShowingUpdate:(BOOL)handleShowingUpdate
                                        forUpdate:(SUAppcastItem*)update
                                            state:(SPUUserUpdateState*)state;
- (void)standardUserDriverDidReceiveUserAttentionForUpdate:(SUAppcastItem*)update;
- (void)standardUserDriverWillFinishUpdateSession;
@end

@interface SPUUpdater : NSObject
@property(nonatomic) BOOL automaticallyChecksForUpdates;
@property(nonatomic) BOOL canCheckForUpdates;
@end

@interface SPUStandardUpdaterController : NSObject
@property(nonatomic, readonly) SPUUpdater* updater;
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id<SPUUpdaterDelegate>)updaterDelegate
                     userDriverDelegate:(id<SPUStandardUserDriverDelegate>)userDriverDelegate;
- (void)checkForUpdates:(id)sender;

// Only of the stand-in, for tests.
@property(class, nonatomic, readonly) SPUStandardUpdaterController* last;
@property(nonatomic, readonly) id<SPUUpdaterDelegate> updaterDelegate;
@property(nonatomic, readonly) id<SPUStandardUserDriverDelegate> userDriverDelegate;
@property(nonatomic, readonly) int checks;
@end
