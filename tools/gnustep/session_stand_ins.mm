// The session of a user, by the files of the folder that the variable QUILLERY_RIG names:
//
//   running/IDENTIFIER     the process of a running application
//   installed/IDENTIFIER   the location of an installed application
//   switched-off           there if the user has switched the login agent off
//   events                 what the program has asked the session for, a line each
#import <AppKit/AppKit.h>
#import <CoreGraphics/CoreGraphics.h>
#import <ServiceManagement/ServiceManagement.h>

#include <libproc.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include "tools/gnustep/replaced_methods.h"

NSString* const NSWorkspaceApplicationKey = @"NSWorkspaceApplicationKey";

namespace {

std::string fileOfTheRig(const std::string& name) {
  const char* const folder = std::getenv("QUILLERY_RIG");
  return folder != nullptr ? folder + ("/" + name) : std::string();
}

// Returns the first line of a file of the rig.
std::optional<std::string> lineOf(const std::string& name) {
  std::ifstream file(fileOfTheRig(name));
  std::string line;
  return std::getline(file, line) ? std::optional(line) : std::nullopt;
}

void note(NSString* event) { std::ofstream(fileOfTheRig("events"), std::ios::app) << event.UTF8String << '\n'; }

pid_t processOf(NSString* identifier) {
  const auto line = lineOf("running/" + std::string(identifier.UTF8String));
  const pid_t process = line ? std::atoi(line->c_str()) : 0;
  return process > 0 && kill(process, 0) == 0 ? process : 0;
}

}  // namespace

@interface RigRunningApplication : NSRunningApplication
- (instancetype)initWithIdentifier:(NSString*)identifier process:(pid_t)process;
@end

@implementation RigRunningApplication {
  NSString* identifier_;
  pid_t process_;
}

- (instancetype)initWithIdentifier:(NSString*)identifier process:(pid_t)process {
  self = [super init];
  if (self != nil) {
    identifier_ = [identifier copy];
    process_ = process;
  }
  return self;
}

- (NSString*)bundleIdentifier {
  return identifier_;
}

- (pid_t)processIdentifier {
  return process_;
}

- (BOOL)terminate {
  note([NSString stringWithFormat:@"quit %@", identifier_]);
  return kill(process_, SIGTERM) == 0;
}

@end

@implementation NSRunningApplication (Rig)

+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  const pid_t process = processOf(identifier);
  return process != 0 ? @[ [[RigRunningApplication alloc] initWithIdentifier:identifier process:process] ] : @[];
}

+ (id)runningApplicationWithProcessIdentifier:(pid_t)__unused process {
  return nil;
}

+ (NSRunningApplication*)endedApplicationWithBundleIdentifier:(NSString*)identifier {
  return [[RigRunningApplication alloc] initWithIdentifier:identifier process:-1];
}

@end

@implementation NSWorkspaceOpenConfiguration

+ (instancetype)configuration {
  return [[self alloc] init];
}

@end

@implementation NSWorkspace (Rig)

- (void)openApplicationAtURL:(NSURL*)url
               configuration:(NSWorkspaceOpenConfiguration*)__unused configuration
           completionHandler:(void (^)(NSRunningApplication*, NSError*))__unused handler {
  note([@"launch " stringByAppendingString:url.path]);
  std::string path = url.path.UTF8String;
  char* const arguments[] = {path.data(), nullptr};
  pid_t process = 0;
  posix_spawn(&process, path.c_str(), nullptr, nullptr, arguments, environ);
}

- (BOOL)openURL:(NSURL*)url {
  note([@"open " stringByAppendingString:url.absoluteString]);
  return YES;
}

- (void)activateFileViewerSelectingURLs:(NSArray*)urls {
  for (NSURL* url in urls) note([@"reveal " stringByAppendingString:url.path]);
}

- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier {
  const auto location = lineOf("installed/" + std::string(identifier.UTF8String));
  return location ? [NSURL fileURLWithPath:[NSString stringWithUTF8String:location->c_str()]] : nil;
}

@end

// The center of GNUstep's workspace sends its notifications to other programs, too, and loses their objects.
__attribute__((constructor)) static void keepNotificationsLocal() {
  for (const char* selector :
       {"postNotification:", "postNotificationName:object:", "postNotificationName:object:userInfo:"}) {
    Method const local = class_getInstanceMethod(objc_getClass("NSNotificationCenter"), sel_registerName(selector));
    replaceMethod("_GSWorkspaceCenter", selector, method_getImplementation(local));
  }
}

@implementation SMAppService

+ (SMAppServiceStatus)statusForLegacyURL:(NSURL*)__unused url {
  const bool isOff = std::filesystem::exists(fileOfTheRig("switched-off"));
  return isOff ? SMAppServiceStatusRequiresApproval : static_cast<SMAppServiceStatus>(1);
}

@end

// Somebody is logged in if there is a display.
CFDictionaryRef CGSessionCopyCurrentDictionary(void) {
  return std::getenv("DISPLAY") != nullptr ? (__bridge_retained CFDictionaryRef)[[NSDictionary alloc] init] : nullptr;
}

int proc_listpids(uint32_t, uint32_t user, void* buffer, int size) {
  auto* const processes = static_cast<pid_t*>(buffer);
  const int most = size / static_cast<int>(sizeof(pid_t));
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    struct stat status {};
    const pid_t process = std::atoi(entry.path().filename().c_str());
    if (process == 0 || stat(entry.path().c_str(), &status) != 0 || status.st_uid != user) continue;
    if (buffer != nullptr && count == most) break;
    if (buffer != nullptr) processes[count] = process;
    ++count;
  }
  return count * static_cast<int>(sizeof(pid_t));
}

int proc_pidpath(int process, void* buffer, uint32_t size) {
  const ssize_t length =
      readlink(("/proc/" + std::to_string(process) + "/exe").c_str(), static_cast<char*>(buffer), size);
  return length > 0 ? static_cast<int>(length) : 0;
}
