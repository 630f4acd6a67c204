#include "platform/qt/application_service.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <utility>

#include "platform/linux/object_path.h"
#include "platform/qt/posted_work.h"

namespace {

constexpr const char* applicationInterface = "org.freedesktop.Application";

// `platform_data` is a dictionary with facts about the launcher.
constexpr const char* description = R"(<interface name="org.freedesktop.Application">
  <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
  <method name="Open">
    <arg type="as" name="uris" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
  <method name="ActivateAction">
    <arg type="s" name="action_name" direction="in"/>
    <arg type="av" name="parameter" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
</interface>
)";

bool isCall(const QDBusMessage& message, const char* member, const char* signature) {
  return message.member() == member && message.signature() == signature;
}

}  // namespace

ApplicationService::ApplicationService(const std::string& name, ApplicationRequests requests)
    : name_(QString::fromStdString(name)), requests_(std::move(requests)) {
  QDBusConnection& bus = session_.bus();
  if (!bus.isConnected()) return;
  // In this order, so that the object exists once the name has an owner.
  bus.registerVirtualObject(QString::fromStdString(objectPath(name)), this);
  const auto answer = bus.interface()->registerService(name_, QDBusConnectionInterface::DontQueueService);
  instance_ = answer.isValid() && answer.value() == QDBusConnectionInterface::ServiceNotRegistered ? Instance::second
                                                                                                   : Instance::first;
}

ApplicationService::~ApplicationService() {
  if (session_.bus().isConnected()) session_.bus().unregisterService(name_);
}

bool ApplicationService::openFirst() {
  constexpr int mostMilliseconds = 2000;
  QDBusMessage call = QDBusMessage::createMethodCall(name_, QString::fromStdString(objectPath(name_.toStdString())),
                                                     applicationInterface, "Activate");
  call.setArguments({QVariantMap()});
  return session_.bus().call(call, QDBus::Block, mostMilliseconds).type() == QDBusMessage::ReplyMessage;
}

QString ApplicationService::introspect(const QString&) const { return description; }

bool ApplicationService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  if (!message.interface().isEmpty() && message.interface() != applicationInterface) return false;
  const std::function<void()> request = requestOf(message);
  if (!request) return false;
  if (message.isReplyRequired()) connection.send(message.createReply());
  post(*this, request);
  return true;
}

// Returns the request that the message makes; empty if it is unknown.
std::function<void()> ApplicationService::requestOf(const QDBusMessage& message) const {
  if (isCall(message, "Activate", "a{sv}") || isCall(message, "Open", "asa{sv}")) return requests_.reopen;
  if (isCall(message, "ActivateAction", "sava{sv}") && message.arguments().value(0).toString() == "quit")
    return requests_.quit;
  return nullptr;
}
