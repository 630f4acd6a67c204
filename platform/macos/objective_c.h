// Every Objective-C++ header of this layer includes this header.
#pragma once

#if !__has_feature(objc_arc)
#error "The sources of platform/macos rely on automatic reference counting: compile them with -fobjc-arc."
#endif

#import <Foundation/Foundation.h>
