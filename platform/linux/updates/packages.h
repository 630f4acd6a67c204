// What the updater needs of the system's package manager.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

// A question to the package manager, or a request. Destroying it does not stop what was requested, but its handler is
// not called any more. A handler may destroy it.
using PackageRequest = std::shared_ptr<void>;

// The package that this program was installed from.
struct OwnPackage {
  std::string name;            // empty if the program belongs to no package
  bool hasRepository = false;  // true if a repository of the system offers the package
};

// What a package file says of itself.
struct PackageFacts {
  std::string name;
  std::string version;    // of the program, without Debian's epoch and revision
  std::string processor;  // in Debian's words
};

enum class Installation {
  done,
  cancelled,  // the user has not allowed it
  failed,
  left  // there is no way to install it; the file manager shows the file
};

// Every handler is called on the main thread by the event loop, never by these functions themselves, and at most once.
class Packages {
 public:
  virtual ~Packages() = default;

  virtual PackageRequest findOwn(std::function<void(const OwnPackage&)> found) = 0;

  // Reads a package file; absent if it is none.
  virtual PackageRequest describe(const std::string& path,
                                  std::function<void(const std::optional<PackageFacts>&)> described) = 0;

  // Installs a package file whose signature holds. The handler gets the reason of a failure as a text.
  virtual PackageRequest install(const std::string& path,
                                 std::function<void(Installation, const std::string& reason)> finished) = 0;
};
