// What GNUstep's Foundation lacks. tools/gnustep/include/Foundation/Foundation.h has what each stands for.
#import <AppKit/AppKit.h>
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "tools/gnustep/replaced_methods.h"

extern "C" void objc_release(void* object);

namespace {

NSError* errorOfSystem(int number) {
  NSString* const reason = [NSString stringWithUTF8String:std::strerror(number)];
  return [NSError errorWithDomain:NSPOSIXErrorDomain code:number userInfo:@{NSLocalizedDescriptionKey : reason}];
}

void report(NSError* error, NSError** place) {
  if (place != nullptr) *place = error;
}

// Replaces NSRunLoopCommonModes by the modes of an application.
NSArray* withoutCommonModes(NSArray* modes) {
  NSMutableArray* const all = [NSMutableArray arrayWithArray:modes];
  if (![all containsObject:NSRunLoopCommonModes]) return modes;
  [all removeObject:NSRunLoopCommonModes];
  [all addObjectsFromArray:@[ NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode ]];
  return all;
}

}  // namespace

@implementation NSFileManager (Rig)

- (NSURL*)homeDirectoryForCurrentUser {
  const char* const home = std::getenv("HOME");
  return [NSURL fileURLWithPath:home != nullptr ? [NSString stringWithUTF8String:home] : NSHomeDirectory()];
}

- (BOOL)setAttributes:(NSDictionary*)attributes ofItemAtPath:(NSString*)path error:(NSError**)error {
  NSNumber* const mode = attributes[NSFilePosixPermissions];
  if (chmod(path.fileSystemRepresentation, static_cast<mode_t>(mode.unsignedIntValue)) == 0) return YES;
  report(errorOfSystem(errno), error);
  return NO;
}

@end

// Data that shares its bytes with others. The deallocator is a block that keeps them alive.
@interface RigSharedData : NSData
- (instancetype)initWithShared:(const void*)bytes length:(NSUInteger)length deallocator:(id)deallocator;
@end

@implementation RigSharedData {
  const void* bytes_;
  NSUInteger length_;
  void (^deallocator_)(void*, NSUInteger);
}

- (instancetype)initWithShared:(const void*)bytes length:(NSUInteger)length deallocator:(id)deallocator {
  // Without the superclass's initializer, which would call one that only its own classes have.
  bytes_ = bytes;
  length_ = length;
  deallocator_ = [deallocator copy];
  return self;
}

- (const void*)bytes {
  return bytes_;
}

- (NSUInteger)length {
  return length_;
}

- (id)copyWithZone:(NSZone*)__unused zone {
  return self;
}

- (void)dealloc {
  deallocator_(const_cast<void*>(bytes_), length_);
}

@end

@implementation NSData (Rig)

+ (instancetype)dataWithContentsOfFile:(NSString*)path options:(NSUInteger)__unused options error:(NSError**)error {
  errno = 0;
  NSData* const data = [self dataWithContentsOfFile:path];
  if (data == nil) report(errorOfSystem(errno != 0 ? errno : EIO), error);
  return data;
}

@end

@implementation NSTask (Rig)

- (NSURL*)executableURL {
  return [NSURL fileURLWithPath:self.launchPath];
}

// A program that only a Mac has, such as launchctl, is taken from the folder that the variable QUILLERY_RIG names.
- (void)setExecutableURL:(NSURL*)url {
  const char* const rig = std::getenv("QUILLERY_RIG");
  const bool isThere = [NSFileManager.defaultManager fileExistsAtPath:url.path];
  self.launchPath =
      isThere || rig == nullptr ? url.path : [NSString stringWithFormat:@"%s/%@", rig, url.path.lastPathComponent];
}

// Looks before it launches: if there is no program, GNUstep's child process runs the destructors of its parent.
- (BOOL)launchAndReturnError:(NSError**)error {
  struct stat status {};
  const char* const path = self.launchPath.fileSystemRepresentation;
  if (stat(path, &status) == 0 && S_ISREG(status.st_mode) && access(path, X_OK) == 0) {
    [self launch];
    return YES;
  }
  report(errorOfSystem(errno != 0 ? errno : EACCES), error);
  return NO;
}

@end

// Runs a block as a selector.
@interface RigBlockRunner : NSObject
- (instancetype)initWithBlock:(void (^)(void))block;
- (void)run;
@end

@implementation RigBlockRunner {
  void (^block_)(void);
}

- (instancetype)initWithBlock:(void (^)(void))block {
  self = [super init];
  if (self != nil) block_ = [block copy];
  return self;
}

- (void)run {
  block_();
}

@end

@implementation NSRunLoop (Rig)

- (void)performInModes:(NSArray*)modes block:(void (^)(void))block {
  [self performSelector:@selector(run)
                 target:[[RigBlockRunner alloc] initWithBlock:block]
               argument:nil
                  order:0
                  modes:modes];
}

@end

namespace {

__attribute__((ns_returns_retained)) id initSharing(__attribute__((ns_consumed)) id, SEL, void* bytes,
                                                    NSUInteger length, id deallocator) {
  return [[RigSharedData alloc] initWithShared:bytes length:length deallocator:deallocator];
}

void (*addTimer)(NSRunLoop*, SEL, NSTimer*, NSString*);

void addTimerInCommonModes(NSRunLoop* loop, SEL selector, NSTimer* timer, NSString* mode) {
  for (NSString* each in withoutCommonModes(@[ mode ])) addTimer(loop, selector, timer, each);
}

void (*performSelector)(NSRunLoop*, SEL, SEL, id, id, NSUInteger, NSArray*);

void performInCommonModes(NSRunLoop* loop, SEL selector, SEL performed, id target, id argument, NSUInteger order,
                          NSArray* modes) {
  performSelector(loop, selector, performed, target, argument, order, withoutCommonModes(modes));
}

void (*removeObserver)(NSNotificationCenter*, SEL, id);

// GNUstep never releases an observer that was made for a block.
void removeAndReleaseObserver(NSNotificationCenter* center, SEL selector, id observer) {
  removeObserver(center, selector, observer);
  if ([observer isKindOfClass:NSClassFromString(@"GSNotificationObserver")]) objc_release((__bridge void*)observer);
}

// GNUstep does not look for the executable where Apple's bundles have it.
NSURL* executableOf(NSBundle* bundle, SEL) {
  NSString* const name = [bundle objectForInfoDictionaryKey:@"CFBundleExecutable"];
  if (name != nil)
    return [NSURL fileURLWithPath:[NSString stringWithFormat:@"%@/Contents/MacOS/%@", bundle.bundlePath, name]];
  return [NSURL fileURLWithPath:bundle.executablePath];
}

}  // namespace

__attribute__((constructor)) static void replaceMethodsOfFoundation() {
  removeObserver = replaceMethod("NSNotificationCenter", "removeObserver:", removeAndReleaseObserver);
  replaceMethod("NSBundle", "executableURL", executableOf);
  replaceMethod("NSDataMalloc", "initWithBytesNoCopy:length:deallocator:", initSharing);  // the class of [NSData alloc]
  addTimer = replaceMethod("NSRunLoop", "addTimer:forMode:", addTimerInCommonModes);
  performSelector = replaceMethod("NSRunLoop", "performSelector:target:argument:order:modes:", performInCommonModes);
}

// Enough for a few titles.
@implementation NSString (Rig)

- (NSComparisonResult)localizedStandardCompare:(NSString*)other {
  return [self compare:other
               options:NSCaseInsensitiveSearch | NSNumericSearch
                 range:NSMakeRange(0, self.length)
                locale:[[NSLocale alloc] initWithLocaleIdentifier:@"en_US"]];
}

@end

// Goes from minute to minute.
@implementation NSCalendar (Rig)

- (NSDate*)nextDateAfterDate:(NSDate*)date
          matchingComponents:(NSDateComponents*)wanted
                     options:(NSUInteger)__unused options {
  constexpr NSTimeInterval minute = 60;
  constexpr int minutesOfAWeek = 7 * 24 * 60;
  NSTimeInterval time = (std::floor(date.timeIntervalSinceReferenceDate / minute) + 1) * minute;
  for (int count = 0; count <= minutesOfAWeek; ++count, time += minute) {
    NSDate* const candidate = [NSDate dateWithTimeIntervalSinceReferenceDate:time];
    NSDateComponents* const found = [self components:NSCalendarUnitHour | NSCalendarUnitMinute | NSCalendarUnitWeekday
                                            fromDate:candidate];
    const bool isDay = wanted.weekday == NSDateComponentUndefined || wanted.weekday == found.weekday;
    if (isDay && wanted.hour == found.hour && wanted.minute == found.minute) return candidate;
  }
  return nil;
}

- (NSDate*)startOfDayForDate:(NSDate*)date {
  return [self dateFromComponents:[self components:NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay
                                          fromDate:date]];
}

@end

// GNUstep has these two Booleans in a class of their own.
namespace {

constexpr CFTypeID otherType = 1;
constexpr CFTypeID booleanType = 2;

}  // namespace

CFTypeID CFBooleanGetTypeID(void) { return booleanType; }

CFTypeID CFGetTypeID(CFTypeRef object) {
  return [(__bridge id)object isKindOfClass:[@YES class]] ? booleanType : otherType;
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
  const char type = *((__bridge NSNumber*)number).objCType;
  return type == *@encode(double) || type == *@encode(float);
}
