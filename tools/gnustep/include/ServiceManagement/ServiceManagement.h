// The part of ServiceManagement that the program uses. session_stand_ins.mm implements it.
#pragma once

#import <Foundation/Foundation.h>

typedef enum SMAppServiceStatus : NSInteger { SMAppServiceStatusRequiresApproval = 2 } SMAppServiceStatus;

@interface SMAppService : NSObject
+ (SMAppServiceStatus)statusForLegacyURL:(NSURL*)url;
@end
