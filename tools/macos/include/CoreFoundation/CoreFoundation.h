// What the program uses of CoreFoundation, declared for builds without the framework's own headers. In all of these
// headers a declaration without a version is in macOS 10.4 and later.
#pragma once

#include <objc/objc.h>
#include <os/availability.h>

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

// Geometry.
typedef double CGFloat;
typedef struct CGPoint {
  CGFloat x;
  CGFloat y;
} CGPoint;
typedef struct CGSize {
  CGFloat width;
  CGFloat height;
} CGSize;
typedef struct CGRect {
  CGPoint origin;
  CGSize size;
} CGRect;

#ifdef __cplusplus
}
#endif
