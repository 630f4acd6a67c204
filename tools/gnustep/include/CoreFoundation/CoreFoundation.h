// The part of CoreFoundation that the program uses. foundation_stand_ins.mm implements it.
#pragma once

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned long CFTypeID;
typedef unsigned char Boolean;
typedef const void* CFTypeRef;
typedef const struct __attribute__((objc_bridge(NSNumber))) __CFNumber* CFNumberRef;
typedef const struct __attribute__((objc_bridge(NSDictionary))) __CFDictionary* CFDictionaryRef;

CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFBooleanGetTypeID(void);
Boolean CFNumberIsFloatType(CFNumberRef number);

#ifdef __cplusplus
}
#endif
