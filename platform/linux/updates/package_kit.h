// Installing packages through PackageKit.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/updates/packages.h"

// An installation in progress. Destroying it does not stop the installation.
class PackageKitInstallation {
 public:
  // Without an installation there is no service that could have done it.
  using Finished = std::function<void(std::optional<Installation>, const std::string& reason)>;

  // Asks PackageKit on the system bus to install a package file; it asks the user for a permission. Never installs an
  // older version over a newer one. The loop, which must outlive this, calls `finished` once; that may destroy this.
  PackageKitInstallation(EventLoop& loop, std::string path, Finished finished);
  PackageKitInstallation(const PackageKitInstallation&) = delete;
  PackageKitInstallation& operator=(const PackageKitInstallation&) = delete;

 private:
  void run(const std::string& transaction);
  void readError(sd_bus_message* signal);
  void readEnd(sd_bus_message* signal);
  void readOwner(sd_bus_message* signal);
  void finish(std::optional<Installation> installation, const std::string& reason);

  EventLoop& loop_;
  std::string path_;
  std::shared_ptr<Finished> finished_;
  bool isFinished_ = false;
  std::string reason_;
  bool isRefused_ = false;  // by the user or the system's rules
  BusConnection bus_;
};
