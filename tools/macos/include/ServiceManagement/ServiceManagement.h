// What the program uses of ServiceManagement, declared for builds without the framework's own headers. Names, types
// and values are those of the framework's public documentation.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef enum SMAppServiceStatus : NSInteger { SMAppServiceStatusRequiresApproval = 2 } SMAppServiceStatus;

API_AVAILABLE(macos(13.0))
@interface SMAppService : NSObject
+ (SMAppServiceStatus)statusForLegacyURL:(NSURL*)url;
@end

NS_ASSUME_NONNULL_END
