#include "platform/macos/desktop/action_target.h"

#include <utility>

#include "platform/macos/desktop/callback.h"

@implementation ActionTarget {
  Action action_;
}

- (instancetype)initWithAction:(Action)action {
  self = [super init];
  if (self != nil) action_ = std::move(action);
  return self;
}

- (void)performAction:(id)__unused sender {
  const Action action = action_;  // the action may destroy this object
  if (action) callBack(action);
}

@end
