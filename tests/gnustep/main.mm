#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

int main(int count, char** values) {
  @autoreleasepool {
    GSDebugAllocationActive(YES);
    testing::InitGoogleTest(&count, values);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    static_cast<void>(NSApplication.sharedApplication);
    return RUN_ALL_TESTS();
  }
}
