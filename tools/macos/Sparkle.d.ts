// The part of Sparkle 2 that the program may use, in the notation of the published listings, which do not cover
// Sparkle. Written from the documentation in Sparkle's public headers: SPUUpdater.h, SPUUpdaterDelegate.h,
// SPUStandardUpdaterController.h, SPUStandardUserDriverDelegate.h and SPUUserUpdateState.h.

declare const SPUUserUpdateStage: {
  NotDownloaded: 0,
  Downloaded: 1,
  Installing: 2,
};

declare class SPUUserUpdateState extends NSObject {
  readonly stage: interop.Enum<typeof SPUUserUpdateStage>;
  readonly userInitiated: boolean;
}

declare interface SPUUpdaterDelegate extends NSObjectProtocol {
  updaterShouldPromptForPermissionToCheckForUpdates?(updater: SPUUpdater): boolean;
  updaterShouldRelaunchApplication?(updater: SPUUpdater): boolean;
  updaterWillRelaunchApplication?(updater: SPUUpdater): void;
  updaterWillInstallUpdate?(updater: SPUUpdater, item: SUAppcastItem): void;
  updaterShouldPostponeRelaunchForUpdateUntilInvokingBlock?(updater: SPUUpdater, item: SUAppcastItem, installHandler: () => void): boolean;
}

declare interface SPUStandardUserDriverDelegate extends NSObjectProtocol {
  readonly supportsGentleScheduledUpdateReminders?: boolean;
  standardUserDriverShouldHandleShowingScheduledUpdateAndInImmediateFocus?(update: SUAppcastItem, immediateFocus: boolean): boolean;
  standardUserDriverWillHandleShowingUpdateForUpdateState?(handleShowingUpdate: boolean, update: SUAppcastItem, state: SPUUserUpdateState): void;
  standardUserDriverDidReceiveUserAttentionForUpdate?(update: SUAppcastItem): void;
  standardUserDriverWillFinishUpdateSession?(): void;
  standardUserDriverWillShowModalAlert?(): void;
  standardUserDriverDidShowModalAlert?(): void;
}

declare class SPUUpdater extends NSObject {
  startUpdater(error: interop.PointerConvertible): boolean;
  checkForUpdates(): void;
  checkForUpdatesInBackground(): void;
  checkForUpdateInformation(): void;
  resetUpdateCycle(): void;
  readonly canCheckForUpdates: boolean;
  readonly sessionInProgress: boolean;
  automaticallyChecksForUpdates: boolean;
  automaticallyDownloadsUpdates: boolean;
  updateCheckInterval: number;
  readonly feedURL: NSURL;
  readonly lastUpdateCheckDate: NSDate;
}

declare class SPUStandardUpdaterController extends NSObject {
  initWithUpdaterDelegateUserDriverDelegate(updaterDelegate: SPUUpdaterDelegate, userDriverDelegate: SPUStandardUserDriverDelegate): this;
  initWithStartingUpdaterUpdaterDelegateUserDriverDelegate(startUpdater: boolean, updaterDelegate: SPUUpdaterDelegate, userDriverDelegate: SPUStandardUserDriverDelegate): this;
  startUpdater(): void;
  checkForUpdates(sender: interop.Object): void;
  readonly updater: SPUUpdater;
}
