#include "platform/linux/updates/package_kit.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr const char* service = "org.freedesktop.PackageKit";
constexpr const char* servicePath = "/org/freedesktop/PackageKit";
constexpr const char* transactionInterface = "org.freedesktop.PackageKit.Transaction";

// Of PackageKit's enumerations.
constexpr std::uint64_t noFlags = 0;  // may install what no repository has signed; may not downgrade
constexpr std::uint32_t exitSuccess = 1;
constexpr std::uint32_t exitCancelled = 3;
constexpr std::uint32_t errorCancelled = 17;
constexpr std::uint32_t errorNotAuthorized = 48;

}  // namespace

PackageKitInstallation::PackageKitInstallation(EventLoop& loop, std::string path, Finished finished)
    : loop_(loop),
      path_(std::move(path)),
      finished_(std::make_shared<Finished>(std::move(finished))),
      bus_(loop, MessageBus::system) {
  if (!bus_.isOpen()) finish(std::nullopt, "");
  bus_.call(
      {service, servicePath, service, "CreateTransaction"}, [](sd_bus_message*) { return true; },
      [this](sd_bus_message* reply) {
        const char* transaction = nullptr;
        if (reply == nullptr || sd_bus_message_read(reply, "o", &transaction) <= 0) return finish(std::nullopt, "");
        run(transaction);
      });
}

void PackageKitInstallation::run(const std::string& transaction) {
  const char* path = transaction.c_str();
  bus_.subscribe(service, path, transactionInterface, "ErrorCode",
                 [this](sd_bus_message* signal) { readError(signal); });
  bus_.subscribe(service, path, transactionInterface, "Finished", [this](sd_bus_message* signal) { readEnd(signal); });
  bus_.subscribe(messageBusName, messageBusPath, messageBusName, "NameOwnerChanged",
                 [this](sd_bus_message* signal) { readOwner(signal); });
  const auto hints = [](sd_bus_message* call) { return sd_bus_message_append(call, "as", 1, "interactive=true") >= 0; };
  bus_.call({service, transaction, transactionInterface, "SetHints"}, hints, [](sd_bus_message*) {});
  const auto arguments = [this](sd_bus_message* call) {
    return sd_bus_message_append(call, "tas", noFlags, 1, path_.c_str()) >= 0;
  };
  bus_.call({service, transaction, transactionInterface, "InstallFiles"}, arguments, [this](sd_bus_message* reply) {
    if (reply == nullptr) finish(std::nullopt, "");
  });
}

void PackageKitInstallation::readError(sd_bus_message* signal) {
  std::uint32_t code = 0;
  const char* details = nullptr;
  if (sd_bus_message_read(signal, "us", &code, &details) <= 0) return;
  isRefused_ = code == errorCancelled || code == errorNotAuthorized;
  reason_ = details;
}

void PackageKitInstallation::readEnd(sd_bus_message* signal) {
  std::uint32_t end = 0;
  if (sd_bus_message_read(signal, "uu", &end, nullptr) <= 0) return;
  if (end == exitSuccess) return finish(Installation::done, "");
  if (isRefused_ || end == exitCancelled) return finish(Installation::cancelled, "");
  finish(Installation::failed, reason_.empty() ? "PackageKit gave no reason." : reason_);
}

void PackageKitInstallation::readOwner(sd_bus_message* signal) {
  const char* name = nullptr;
  const char* newOwner = nullptr;
  if (sd_bus_message_read(signal, "sss", &name, nullptr, &newOwner) <= 0) return;
  if (name == std::string_view(service) && *newOwner == '\0')
    finish(Installation::failed, "PackageKit ended before the installation did.");
}

// Posts the result, because the handlers of a bus may not destroy their connection.
void PackageKitInstallation::finish(std::optional<Installation> installation, const std::string& reason) {
  if (std::exchange(isFinished_, true)) return;
  loop_.post([finished = std::weak_ptr(finished_), installation, reason] {
    if (const auto present = finished.lock()) (*present)(installation, reason);
  });
}
