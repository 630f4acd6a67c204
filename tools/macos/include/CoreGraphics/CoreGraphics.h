// What the program uses of CoreGraphics, declared for builds without the framework's own headers.
#pragma once

#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

CFDictionaryRef _Nullable CGSessionCopyCurrentDictionary(void) __attribute__((cf_returns_retained));

#ifdef __cplusplus
}
#endif
