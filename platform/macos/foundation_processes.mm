#include "platform/macos/foundation_processes.h"

#include <unistd.h>

#include "platform/macos/conversions.h"
#include "platform/posix/surroundings.h"

namespace {

NSArray<NSString*>* stringsOf(const std::vector<std::string>& texts) {
  NSMutableArray<NSString*>* const strings = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string& text : texts) [strings addObject:stringOf(text)];
  return strings;
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

int FoundationProcesses::run(const std::string& path, const std::vector<std::string>& arguments) {
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

void FoundationProcesses::pause(std::chrono::milliseconds duration) { pauseThread(duration); }
