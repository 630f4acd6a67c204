// The download of an update's package, and what is checked before anything opens it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/updates/appcast.h"
#include "platform/linux/updates/private_file.h"
#include "platform/linux/updates/update_tools.h"

// A download in progress, and afterwards its file, which is removed with this. Destroying it cancels the download.
class PackageDownload {
 public:
  struct Handlers {
    std::function<void(std::uint64_t bytes)> advanced;

    // Called once, with none if the package may be installed, otherwise with what is wrong, as a sentence for the user.
    // May destroy the download.
    std::function<void(const std::optional<std::string>& failure)> finished;
  };

  // For the package of an item. The tools must outlive this.
  PackageDownload(UpdateTools& tools, AppcastItem item, Handlers handlers)
      : tools_(tools), item_(std::move(item)), handlers_(std::move(handlers)) {}

  // Call once. May call `finished` before it returns.
  void start();

  // The package, once it may be installed: it has the announced length, the signature of our key, and the announced
  // version of this program for this processor, which is newer than this one.
  PrivateFile& file() { return *file_; }

 private:
  bool receive(std::string_view bytes);
  void verify(const std::optional<std::string>& failure);
  void requireAnnounced(const std::optional<PackageFacts>& facts) const;
  bool attempt(const std::function<void()>& step);
  void finish(const std::optional<std::string>& failure);

  UpdateTools& tools_;
  AppcastItem item_;
  Handlers handlers_;
  std::unique_ptr<PrivateFile> file_;
  PackageRequest request_;
  std::unique_ptr<Transfer> transfer_;
};
