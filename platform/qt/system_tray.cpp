#include "platform/qt/system_tray.h"

#include <xcb/xcb.h>

#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/qt/posted_work.h"

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

bool hasNotifierHost(const QDBusConnection& bus) {
  QDBusMessage question =
      QDBusMessage::createMethodCall(watcherName, watcherPath, "org.freedesktop.DBus.Properties", "Get");
  question.setArguments({QString(watcherName), "IsStatusNotifierHostRegistered"});
  question.setAutoStartService(false);
  constexpr int timeout = 1000;  // milliseconds
  const QVariant reply = bus.call(question, QDBus::Block, timeout).arguments().value(0);
  return reply.value<QDBusVariant>().variant().toBool();
}

template <class Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

// A tray of the XEmbed protocol owns a selection on the first screen.
bool hasSelectionOwner(xcb_connection_t* display) {
  constexpr std::string_view name = "_NET_SYSTEM_TRAY_S0";
  const auto question = xcb_intern_atom(display, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const ReplyPointer<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(display, question, nullptr), &std::free);
  if (!atom) return false;
  const ReplyPointer<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(display, xcb_get_selection_owner(display, atom->atom), nullptr), &std::free);
  return owner && owner->owner != XCB_NONE;
}

}  // namespace

SystemTray::SystemTray(EventLoop& loop)
    : services_(watcherName, session_.bus(), QDBusServiceWatcher::WatchForRegistration),
      signals_(loop, MessageBus::session) {}

bool SystemTray::isAvailable() {
  if (session_.bus().isConnected() && hasNotifierHost(session_.bus())) return true;
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 != nullptr && x11->connection() != nullptr && hasSelectionOwner(x11->connection());
}

void SystemTray::await(std::function<void()> arrived) {
  arrived_ = std::move(arrived);
  QObject::connect(&services_, &QDBusServiceWatcher::serviceRegistered, &receiver_, [this] { check(); });
  const auto postCheck = [this](sd_bus_message*) { post(receiver_, [this] { check(); }); };
  signals_.subscribe(watcherName, watcherPath, watcherName, "StatusNotifierHostRegistered", postCheck);
  // Once the bus has replied, the subscription is in force; the check then finds a host that registered before.
  signals_.callBus("GetId", nullptr, postCheck);
  QObject::connect(&nextCheck_, &QTimer::timeout, &receiver_, [this] { check(); });
  nextCheck_.start(std::chrono::minutes(1));
}

void SystemTray::check() {
  if (!arrived_ || !isAvailable()) return;
  nextCheck_.stop();
  std::exchange(arrived_, nullptr)();
}
