#include "platform/macos/foundation_processes.h"

#include <unistd.h>

#include <future>

#include "platform/macos/conversions.h"
#include "platform/posix/surroundings.h"

namespace {

NSArray<NSString*>* stringsOf(const std::vector<std::string>& texts) {
  NSMutableArray<NSString*>* const strings = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string& text : texts) [strings addObject:stringOf(text)];
  return strings;
}

int runToItsEnd(const std::string& path, const std::vector<std::string>& arguments) {
  return raisingErrors([&] {
    NSTask* const task = [[NSTask alloc] init];
    task.executableURL = fileAddress(path);
    task.arguments = stringsOf(arguments);
    task.standardInput = NSFileHandle.fileHandleWithNullDevice;
    task.standardOutput = NSFileHandle.fileHandleWithNullDevice;
    task.standardError = NSFileHandle.fileHandleWithNullDevice;
    NSError* error = nil;
    if (![task launchAndReturnError:&error]) throw errorOf(error);
    [task waitUntilExit];
    return task.terminationStatus;  // the signal's number if a signal ended it
  });
}

}  // namespace

std::string FoundationProcesses::randomUuid() { return textOf(NSUUID.UUID.UUIDString); }

int FoundationProcesses::processIdentifier() { return NSProcessInfo.processInfo.processIdentifier; }

unsigned FoundationProcesses::userIdentifier() { return getuid(); }

bool FoundationProcesses::writesToTerminal() { return standardOutputIsTerminal(); }

std::optional<std::string> FoundationProcesses::environmentVariable(const std::string& name) {
  return variableOfEnvironment(name);
}

std::string FoundationProcesses::workingFolder() { return currentFolder(); }

// waitUntilExit runs the run loop of its thread until the program ends. On the main thread, that would run posted work,
// timers and events in the middle of whatever calls this, so another thread waits.
int FoundationProcesses::run(const std::string& path, const std::vector<std::string>& arguments) {
  return std::async(std::launch::async,
                    [&] {
                      @autoreleasepool {
                        return runToItsEnd(path, arguments);
                      }
                    })
      .get();
}

void FoundationProcesses::pause(std::chrono::milliseconds duration) { pauseThread(duration); }
