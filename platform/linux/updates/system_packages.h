// Debian's package manager.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/linux/session/event_loop.h"
#include "platform/linux/session/file_manager.h"
#include "platform/linux/updates/packages.h"

// Asks dpkg and apt in processes of their own, so that the main thread never waits for them. Installs through
// PackageKit if it is there, otherwise with pkexec and apt-get; both ask the user for a permission.
class SystemPackages : public Packages {
 public:
  // For the program with this executable. The loop must outlive this. Throws Error if the system creates no timer.
  SystemPackages(EventLoop& loop, std::string executable);

  PackageRequest findOwn(std::function<void(const OwnPackage&)> found) override;
  PackageRequest describe(const std::string& path,
                          std::function<void(const std::optional<PackageFacts>&)> described) override;
  PackageRequest install(const std::string& path,
                         std::function<void(Installation, const std::string& reason)> finished) override;

 private:
  EventLoop& loop_;
  std::string executable_;
  FileManager fileManager_;
};

// What is read from the output of these programs.

// Returns the name of the package in the output of "dpkg-query --search"; empty if there is none.
std::string packageIn(const std::string& search);

// Returns what "dpkg-deb --field FILE Package Version Architecture" says; absent if a field is missing.
std::optional<PackageFacts> factsIn(const std::string& fields);
