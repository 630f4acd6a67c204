// A small Foundation, for the tests of the checker.
#pragma once

#import <objc/NSObject.h>

@interface NSString : NSObject
@end
