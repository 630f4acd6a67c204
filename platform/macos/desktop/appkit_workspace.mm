#include "platform/macos/desktop/appkit_workspace.h"

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>

#include <utility>

#include "platform/macos/appkit_applications.h"
#include "platform/macos/conversions.h"
#include "platform/macos/desktop/notification_observer.h"
#include "platform/posix/existing_folder.h"

namespace {

NSWorkspace* workspace() { return NSWorkspace.sharedWorkspace; }

// Returns the application of a notification; null if it has none.
std::shared_ptr<RunningApplication> applicationIn(NSNotification* notification) {
  id const application = notification.userInfo[NSWorkspaceApplicationKey];
  return [application isKindOfClass:[NSRunningApplication class]] ? runningApplicationOf(application) : nullptr;
}

}  // namespace

std::optional<std::string> AppKitWorkspace::locateApplication(const std::string& bundleIdentifier) {
  NSString* const path = [workspace() URLForApplicationWithBundleIdentifier:stringOf(bundleIdentifier)].path;
  return path != nil ? std::optional(textOf(path)) : std::nullopt;
}

void AppKitWorkspace::openApplication(const std::string& location) {
  [workspace() openApplicationAtURL:fileAddress(location)
                      configuration:[NSWorkspaceOpenConfiguration configuration]
                  completionHandler:nil];
}

void AppKitWorkspace::openAddress(const std::string& address) {
  if (NSURL* const url = [NSURL URLWithString:stringOf(address)]) [workspace() openURL:url];
}

void AppKitWorkspace::openFolder(const std::string& path) {
  [workspace() openURL:[NSURL fileURLWithPath:stringOf(existingFolder(path)) isDirectory:YES]];
}

void AppKitWorkspace::revealFile(const std::string& path) {
  [workspace() activateFileViewerSelectingURLs:@[ fileAddress(path) ]];
}

std::optional<std::string> AppKitWorkspace::fileAccessSettings() {
  return "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";
}

// The status of an agent whose permission to run the user has revoked is "requires approval". The class is looked up by
// its name, so that no linker makes the program depend on a class that macOS 12 does not have.
bool AppKitWorkspace::hasSwitchedOff(const std::string& agentFile) {
  if (@available(macOS 13.0, *)) {
    Class const service = NSClassFromString(@"SMAppService");
    return service != Nil && [service statusForLegacyURL:fileAddress(agentFile)] == SMAppServiceStatusRequiresApproval;
  }
  return false;
}

Observation AppKitWorkspace::observeTerminations(TerminationHandler handler) {
  return observeNotifications(
      workspace().notificationCenter, NSWorkspaceDidTerminateApplicationNotification,
      [handler = std::move(handler)](NSNotification* notification) { handler(applicationIn(notification)); });
}

Observation AppKitWorkspace::observeWake(std::function<void()> handler) {
  return observeNotifications(workspace().notificationCenter, NSWorkspaceDidWakeNotification,
                              [handler = std::move(handler)](NSNotification*) { handler(); });
}
