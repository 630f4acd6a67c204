// GNUstep's Foundation, with what it lacks of Apple's. foundation_stand_ins.mm implements it.
#pragma once

#include_next <Foundation/Foundation.h>

#define __unused __attribute__((unused))  // of Apple's <sys/cdefs.h>

// Names that GNUstep writes in another way.
typedef NSString* NSFileAttributeKey;
typedef NSString* NSKeyValueChangeKey;
enum { NSPropertyListReadCorruptError = 3840 };

// These stand for methods with the same result. What they report of a failure is their own.

@interface NSFileManager (Rig)
// Returns the folder that HOME names.
@property(readonly, copy) NSURL* homeDirectoryForCurrentUser;
- (BOOL)setAttributes:(NSDictionary*)attributes ofItemAtPath:(NSString*)path error:(NSError**)error;
@end

@interface NSData (Rig)
+ (instancetype)dataWithContentsOfFile:(NSString*)path options:(NSUInteger)options error:(NSError**)error;
// GNUstep's forgets the bytes.
- (instancetype)initWithBytesNoCopy:(void*)bytes
                             length:(NSUInteger)length
                        deallocator:(void (^)(void* bytes, NSUInteger length))deallocator;
@end

@interface NSTask (Rig)
@property(copy) NSURL* executableURL;
- (BOOL)launchAndReturnError:(NSError**)error;
@end

// In GNUstep NSRunLoopCommonModes is the name of a mode that never runs. Here it means the modes of an application, for
// timers and performed selectors too.
@interface NSRunLoop (Rig)
- (void)performInModes:(NSArray*)modes block:(void (^)(void))block;
@end

// Only so that the program can go on; no test may judge their results.

@interface NSString (Rig)
- (NSComparisonResult)localizedStandardCompare:(NSString*)other;
@end

@interface NSCalendar (Rig)
- (NSDate*)nextDateAfterDate:(NSDate*)date matchingComponents:(NSDateComponents*)components options:(NSUInteger)options;
- (NSDate*)startOfDayForDate:(NSDate*)date;
@end
