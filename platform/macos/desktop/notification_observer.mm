#include "platform/macos/desktop/notification_observer.h"

#include <memory>
#include <utility>

#include "platform/macos/desktop/callback.h"

namespace {

class NotificationObserver : public std::enable_shared_from_this<NotificationObserver> {
 public:
  NotificationObserver(NSNotificationCenter* center, std::function<void(NSNotification*)> handler)
      : center_(center), handler_(std::move(handler)) {}
  ~NotificationObserver() { [center_ removeObserver:token_]; }
  NotificationObserver(const NotificationObserver&) = delete;
  NotificationObserver& operator=(const NotificationObserver&) = delete;

  void start(NSNotificationName name) {
    const std::weak_ptr<NotificationObserver> weak = weak_from_this();
    token_ = [center_ addObserverForName:name
                                  object:nil
                                   queue:NSOperationQueue.mainQueue
                              usingBlock:^(NSNotification* notification) {
                                // Holds the observer, and with it the handler, during the call.
                                if (const auto present = weak.lock()) callBack(present->handler_, notification);
                              }];
  }

 private:
  NSNotificationCenter* center_;
  std::function<void(NSNotification*)> handler_;
  id token_ = nil;
};

}  // namespace

Observation observeNotifications(NSNotificationCenter* center, NSNotificationName name,
                                 std::function<void(NSNotification*)> handler) {
  const auto observer = std::make_shared<NotificationObserver>(center, std::move(handler));
  observer->start(name);
  return observer;
}
