// The part of CoreGraphics that the program uses. session_stand_ins.mm implements it.
#pragma once

#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

CFDictionaryRef CGSessionCopyCurrentDictionary(void) __attribute__((cf_returns_retained));

#ifdef __cplusplus
}
#endif
