// What the program uses of Foundation, declared for builds without the framework's own headers. Names,
// types and values are those of the framework's public documentation.
#pragma once

#import <CoreFoundation/CoreFoundation.h>
#import <objc/NSObject.h>

#ifdef __cplusplus
#define FOUNDATION_EXPORT extern "C"
#else
#define FOUNDATION_EXPORT extern
#endif

#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")

NS_ASSUME_NONNULL_BEGIN

@class NSArray<ObjectType>;
@class NSCalendar;
@class NSData;
@class NSDate;
@class NSDictionary<KeyType, ObjectType>;
@class NSError;
@class NSNotification;
@class NSOperationQueue;
@class NSString;
@class NSTimer;
@class NSURL;

// --- Plain types ---

typedef double NSTimeInterval;
typedef unsigned short unichar;
typedef CGRect NSRect;

typedef struct _NSRange {
  NSUInteger location;
  NSUInteger length;
} NSRange;

static inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) {
  NSRange range = {location, length};
  return range;
}

static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  NSRect rect = {{x, y}, {width, height}};
  return rect;
}

typedef enum NSComparisonResult : NSInteger {
  NSOrderedAscending = -1L,
  NSOrderedSame,
  NSOrderedDescending
} NSComparisonResult;

typedef NSString* NSErrorDomain;
typedef NSString* NSExceptionName;
typedef NSString* NSNotificationName;
typedef NSString* NSRunLoopMode;
typedef NSString* NSCalendarIdentifier;
typedef NSString* NSFileAttributeKey;
typedef NSString* NSKeyValueChangeKey;

FOUNDATION_EXPORT NSString* NSStringFromClass(Class aClass);
FOUNDATION_EXPORT Class _Nullable NSClassFromString(NSString* aClassName);

// --- Protocols ---

@protocol NSCopying
@end

typedef struct {
  unsigned long state;
  id __unsafe_unretained _Nullable* _Nullable itemsPtr;
  unsigned long* _Nullable mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;

API_AVAILABLE(macos(10.5))
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)length;
@end

// --- Values ---

@interface NSString : NSObject <NSCopying>
@property(readonly) NSUInteger length;
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (instancetype)initWithCharactersNoCopy:(unichar*)characters length:(NSUInteger)length freeWhenDone:(BOOL)freeBuffer;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (BOOL)isEqualToString:(NSString*)aString;
- (NSComparisonResult)localizedStandardCompare:(NSString*)string API_AVAILABLE(macos(10.6));
@end

@interface NSValue : NSObject <NSCopying>
@end

@interface NSNumber : NSValue
@property(readonly) BOOL boolValue;
@property(readonly) double doubleValue;
@property(readonly) long long longLongValue;
@property(readonly) unsigned long long unsignedLongLongValue;
@property(readonly, copy) NSString* stringValue;
- (NSComparisonResult)compare:(NSNumber*)otherNumber;
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithDouble:(double)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithUnsignedLongLong:(unsigned long long)value;
@end

@interface NSDate : NSObject <NSCopying>
@property(readonly) NSTimeInterval timeIntervalSinceReferenceDate;
@property(readonly) NSTimeInterval timeIntervalSince1970;
- (NSComparisonResult)compare:(NSDate*)other;
- (instancetype)dateByAddingTimeInterval:(NSTimeInterval)interval API_AVAILABLE(macos(10.6));
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds;
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)seconds;
+ (instancetype)dateWithTimeIntervalSinceReferenceDate:(NSTimeInterval)seconds;
@end

typedef NSUInteger NSDataReadingOptions;

@interface NSData : NSObject <NSCopying>
@property(readonly) NSUInteger length;
@property(readonly, nullable) const void* bytes;
- (instancetype)initWithBytesNoCopy:(void*)bytes
                             length:(NSUInteger)length
                        deallocator:(nullable void (^)(void* bytes, NSUInteger length))deallocator
    API_AVAILABLE(macos(10.9));
+ (nullable instancetype)dataWithContentsOfFile:(NSString*)path
                                        options:(NSDataReadingOptions)readOptionsMask
                                          error:(NSError* _Nullable* _Nullable)error;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSCopying, NSFastEnumeration>
@property(readonly) NSUInteger count;
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nullable])objects count:(NSUInteger)count;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
- (void)addObject:(ObjectType)object;
+ (instancetype)arrayWithCapacity:(NSUInteger)capacity;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSCopying, NSFastEnumeration>
@property(readonly) NSUInteger count;
- (nullable ObjectType)objectForKeyedSubscript:(KeyType)key API_AVAILABLE(macos(10.8));
+ (instancetype)dictionaryWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                              forKeys:(const KeyType<NSCopying> _Nonnull[_Nullable])keys
                                count:(NSUInteger)count;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
- (void)setObject:(nullable ObjectType)object forKeyedSubscript:(KeyType<NSCopying>)key API_AVAILABLE(macos(10.8));
+ (instancetype)dictionaryWithCapacity:(NSUInteger)capacity;
@end

@interface NSURL : NSObject <NSCopying>
@property(nullable, readonly, copy) NSString* path;
+ (NSURL*)fileURLWithPath:(NSString*)path;
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDirectory API_AVAILABLE(macos(10.5));
+ (nullable instancetype)URLWithString:(NSString*)URLString;
@end

API_AVAILABLE(macos(10.8))
@interface NSUUID : NSObject <NSCopying>
@property(readonly, copy) NSString* UUIDString;
+ (instancetype)UUID;
@end

// --- Errors ---

FOUNDATION_EXPORT NSErrorDomain const NSCocoaErrorDomain;

enum : NSInteger { NSPropertyListReadCorruptError = 3840 };

@interface NSError : NSObject <NSCopying>
@property(readonly, copy) NSErrorDomain domain;
@property(readonly) NSInteger code;
@property(readonly, copy) NSString* localizedDescription;
@end

__attribute__((objc_exception))
@interface NSException : NSObject<NSCopying>
@property(readonly, copy) NSExceptionName name;
@property(nullable, readonly, copy) NSString* reason;
@end

// --- Property lists and settings ---

typedef NSUInteger NSPropertyListMutabilityOptions;
enum : NSUInteger { NSPropertyListImmutable = 0 };
typedef NSPropertyListMutabilityOptions NSPropertyListReadOptions;
typedef NSUInteger NSPropertyListWriteOptions;

typedef enum NSPropertyListFormat : NSUInteger {
  NSPropertyListOpenStepFormat = 1,
  NSPropertyListXMLFormat_v1_0 = 100,
  NSPropertyListBinaryFormat_v1_0 = 200
} NSPropertyListFormat;

@interface NSPropertyListSerialization : NSObject
+ (nullable NSData*)dataWithPropertyList:(id)plist
                                  format:(NSPropertyListFormat)format
                                 options:(NSPropertyListWriteOptions)options
                                   error:(NSError* _Nullable* _Nullable)error API_AVAILABLE(macos(10.6));
+ (nullable id)propertyListWithData:(NSData*)data
                            options:(NSPropertyListReadOptions)options
                             format:(nullable NSPropertyListFormat*)format
                              error:(NSError* _Nullable* _Nullable)error API_AVAILABLE(macos(10.6));
@end

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable id)objectForKey:(NSString*)defaultName;
- (void)setObject:(nullable id)value forKey:(NSString*)defaultName;
@end

// --- Files, bundles and processes ---

FOUNDATION_EXPORT NSFileAttributeKey const NSFilePosixPermissions;

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
@property(readonly, copy) NSURL* homeDirectoryForCurrentUser API_AVAILABLE(macos(10.12));
- (BOOL)createDirectoryAtURL:(NSURL*)url
    withIntermediateDirectories:(BOOL)createIntermediates
                     attributes:(nullable NSDictionary<NSFileAttributeKey, id>*)attributes
                          error:(NSError* _Nullable* _Nullable)error API_AVAILABLE(macos(10.7));
- (BOOL)setAttributes:(NSDictionary<NSFileAttributeKey, id>*)attributes
         ofItemAtPath:(NSString*)path
                error:(NSError* _Nullable* _Nullable)error API_AVAILABLE(macos(10.5));
@end

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy) NSString* bundlePath;
@property(readonly, copy, nullable) NSString* bundleIdentifier;
@property(readonly, copy, nullable) NSURL* executableURL API_AVAILABLE(macos(10.6));
- (nullable id)objectForInfoDictionaryKey:(NSString*)key;
+ (nullable instancetype)bundleWithPath:(NSString*)path;
@end

typedef unsigned long long NSActivityOptions;
enum : unsigned long long { NSActivityUserInitiatedAllowingIdleSystemSleep = 0x00EFFFFF };

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) int processIdentifier;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason API_AVAILABLE(macos(10.9));
- (void)endActivity:(id<NSObject>)activity API_AVAILABLE(macos(10.9));
@end

@interface NSFileHandle : NSObject
@property(class, readonly, strong) NSFileHandle* fileHandleWithNullDevice;
@end

@interface NSTask : NSObject
@property(nullable, copy) NSURL* executableURL API_AVAILABLE(macos(10.13));
@property(nullable, copy) NSArray<NSString*>* arguments;
@property(nullable, retain) id standardInput;
@property(nullable, retain) id standardOutput;
@property(nullable, retain) id standardError;
@property(readonly) int terminationStatus;
- (BOOL)launchAndReturnError:(NSError* _Nullable* _Nullable)error API_AVAILABLE(macos(10.13));
- (void)waitUntilExit;
@end

// --- Calendars ---

FOUNDATION_EXPORT NSCalendarIdentifier const NSCalendarIdentifierGregorian API_AVAILABLE(macos(10.6));

typedef NSUInteger NSCalendarUnit;
enum : NSUInteger {
  NSCalendarUnitYear = 1UL << 2,
  NSCalendarUnitMonth = 1UL << 3,
  NSCalendarUnitDay = 1UL << 4,
  NSCalendarUnitHour = 1UL << 5,
  NSCalendarUnitMinute = 1UL << 6,
  NSCalendarUnitSecond = 1UL << 7,
  NSCalendarUnitWeekday = 1UL << 9
};

typedef NSUInteger NSCalendarOptions;
enum : NSUInteger { NSCalendarMatchNextTime = 1UL << 10, NSCalendarMatchFirst = 1UL << 12 };

@interface NSTimeZone : NSObject <NSCopying>
@property(class, readonly, copy) NSTimeZone* systemTimeZone;
+ (void)resetSystemTimeZone;
+ (nullable instancetype)timeZoneWithName:(NSString*)name;
@end

@interface NSDateComponents : NSObject <NSCopying>
@property NSInteger year;
@property NSInteger month;
@property NSInteger day;
@property NSInteger hour;
@property NSInteger minute;
@property NSInteger second;
@property NSInteger weekday;
@end

@interface NSCalendar : NSObject <NSCopying>
@property(copy) NSTimeZone* timeZone;
- (NSDateComponents*)components:(NSCalendarUnit)unitFlags fromDate:(NSDate*)date;
- (nullable NSDate*)dateFromComponents:(NSDateComponents*)components;
- (nullable NSDate*)nextDateAfterDate:(NSDate*)date
                   matchingComponents:(NSDateComponents*)components
                              options:(NSCalendarOptions)options API_AVAILABLE(macos(10.9));
- (NSDate*)startOfDayForDate:(NSDate*)date API_AVAILABLE(macos(10.9));
+ (nullable NSCalendar*)calendarWithIdentifier:(NSCalendarIdentifier)identifier API_AVAILABLE(macos(10.9));
@end

// --- Loops, timers and notifications ---

FOUNDATION_EXPORT NSRunLoopMode const NSRunLoopCommonModes API_AVAILABLE(macos(10.5));

@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* mainRunLoop API_AVAILABLE(macos(10.5));
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
- (void)performInModes:(NSArray<NSRunLoopMode>*)modes block:(void (^)(void))block API_AVAILABLE(macos(10.12));
- (void)runUntilDate:(NSDate*)limitDate;
@end

@interface NSTimer : NSObject
@property(copy) NSDate* fireDate;
- (instancetype)initWithFireDate:(NSDate*)date
                        interval:(NSTimeInterval)interval
                         repeats:(BOOL)repeats
                           block:(void (^)(NSTimer* timer))block API_AVAILABLE(macos(10.12));
- (void)invalidate;
@end

FOUNDATION_EXPORT NSNotificationName const NSSystemClockDidChangeNotification API_AVAILABLE(macos(10.6));

@interface NSNotification : NSObject <NSCopying>
@property(nullable, readonly, copy) NSDictionary* userInfo;
@end

@interface NSNotificationCenter : NSObject
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
- (id<NSObject>)addObserverForName:(nullable NSNotificationName)name
                            object:(nullable id)object
                             queue:(nullable NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification* notification))block API_AVAILABLE(macos(10.6));
- (void)removeObserver:(id)observer;
@end

// --- Other threads ---

@interface NSObject (NSThreadPerformAdditions)
- (void)performSelectorOnMainThread:(SEL)aSelector
                         withObject:(nullable id)arg
                      waitUntilDone:(BOOL)wait
                              modes:(nullable NSArray<NSString*>*)array;
@end

// --- Observing values ---

typedef NSUInteger NSKeyValueObservingOptions;
enum : NSUInteger { NSKeyValueObservingOptionNew = 0x01, NSKeyValueObservingOptionInitial = 0x04 };

@interface NSObject (NSKeyValueObserving)
- (void)observeValueForKeyPath:(nullable NSString*)keyPath
                      ofObject:(nullable id)object
                        change:(nullable NSDictionary<NSKeyValueChangeKey, id>*)change
                       context:(nullable void*)context;
@end

@interface NSObject (NSKeyValueObserverRegistration)
- (void)addObserver:(NSObject*)observer
         forKeyPath:(NSString*)keyPath
            options:(NSKeyValueObservingOptions)options
            context:(nullable void*)context;
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)keyPath;
@end

NS_ASSUME_NONNULL_END
