#include "platform/macos/desktop/notification_observer.h"

#include <memory>
#include <utility>

#include "platform/macos/desktop/callback.h"

using NotificationHandler = std::function<void(NSNotification*)>;

// Calls the handler, unless it has been released.
@interface NotificationReceiver : NSObject
- (instancetype)initWithHandler:(const std::weak_ptr<NotificationHandler>&)handler;
- (void)receive:(NSNotification*)notification;
@end

@implementation NotificationReceiver {
  std::weak_ptr<NotificationHandler> handler_;
}

- (instancetype)initWithHandler:(const std::weak_ptr<NotificationHandler>&)handler {
  self = [super init];
  if (self != nil) handler_ = handler;
  return self;
}

- (void)receive:(NSNotification*)notification {
  if (const auto handler = handler_.lock()) callBack(*handler, notification);
}

@end

namespace {

class NotificationObserver {
 public:
  NotificationObserver(NSNotificationCenter* center, NSNotificationName name, NotificationHandler handler)
      : center_(center), handler_(std::make_shared<NotificationHandler>(std::move(handler))) {
    NotificationReceiver* const receiver = [[NotificationReceiver alloc] initWithHandler:handler_];
    // Without a queue, the block runs on the thread that posts the notification.
    token_ = [center_ addObserverForName:name
                                  object:nil
                                   queue:nil
                              usingBlock:^(NSNotification* notification) {
                                [receiver performSelectorOnMainThread:@selector(receive:)
                                                           withObject:notification
                                                        waitUntilDone:NO
                                                                modes:@[ NSRunLoopCommonModes ]];
                              }];
  }
  ~NotificationObserver() { [center_ removeObserver:token_]; }
  NotificationObserver(const NotificationObserver&) = delete;
  NotificationObserver& operator=(const NotificationObserver&) = delete;

 private:
  NSNotificationCenter* center_;
  std::shared_ptr<NotificationHandler> handler_;
  id token_;
};

}  // namespace

Observation observeNotifications(NSNotificationCenter* center, NSNotificationName name, NotificationHandler handler) {
  return std::make_shared<NotificationObserver>(center, name, std::move(handler));
}
