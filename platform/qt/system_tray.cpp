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
  constexpr int patience = 1000;  // milliseconds
  const QVariant answer = bus.call(question, QDBus::Block, patience).arguments().value(0);
  return answer.value<QDBusVariant>().variant().toBool();
}

template <class Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

// Older trays own a selection of the first screen.
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

SystemTray::SystemTray() : services_(watcherName, session_.bus(), QDBusServiceWatcher::WatchForRegistration) {}

bool SystemTray::isThere() {
  if (session_.bus().isConnected() && hasNotifierHost(session_.bus())) return true;
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 != nullptr && x11->connection() != nullptr && hasSelectionOwner(x11->connection());
}

void SystemTray::await(std::function<void()> arrived) {
  arrived_ = std::move(arrived);
  QObject::connect(&services_, &QDBusServiceWatcher::serviceRegistered, &receiver_, [this] { look(); });
  const auto postLook = [this](sd_bus_message*) { post(receiver_, [this] { look(); }); };
  signals_.hear(watcherName, watcherPath, watcherName, "StatusNotifierHostRegistered", postLook);
  signals_.ask("GetId", nullptr, postLook);  // once it is answered, the above is heard; what came before that is there
  QObject::connect(&nextLook_, &QTimer::timeout, &receiver_, [this] { look(); });
  nextLook_.start(std::chrono::minutes(1));
}

void SystemTray::look() {
  if (!arrived_ || !isThere()) return;
  nextLook_.stop();
  std::exchange(arrived_, nullptr)();
}
