// The updater's network on Qt.
#pragma once

#include <QNetworkAccessManager>
#include <chrono>
#include <memory>
#include <string>

#include "platform/linux/updates/network.h"

// Checks certificates, uses the desktop's proxies, and asks the user nothing: what needs a password fails. Bodies are
// handed on as they are sent, never decompressed. A QCoreApplication must exist. A transfer
// that brings no bytes for `longestSilence` fails.
class QtNetwork : public Network {
 public:
  explicit QtNetwork(std::chrono::milliseconds longestSilence = std::chrono::minutes(1))
      : longestSilence_(longestSilence) {}

  std::unique_ptr<Transfer> get(const std::string& address, TransferHandlers handlers) override;

 private:
  std::chrono::milliseconds longestSilence_;
  std::weak_ptr<QNetworkAccessManager> manager_;  // has a thread of its own, so it exists only during transfers
};
