// Installs a package as an update, as the program at /usr/bin/quillery does once the signature holds.
// usage: install_update PACKAGE.deb
// Prints what the package manager knows of the program and of the package, and how the installation ended. The exit
// status is 0 if it was done.
#include <QCoreApplication>
#include <iostream>
#include <memory>
#include <string>

#include "platform/linux/updates/system_packages.h"
#include "platform/qt/qt_event_loop.h"

namespace {

constexpr const char* program = "/usr/bin/quillery";

class Update {
 public:
  Update(EventLoop& loop, std::string path) : packages_(loop, program), path_(std::move(path)) {}

  void start() {
    request_ = packages_.findOwn([this](const OwnPackage& own) {
      std::cout << program << " belongs to “" << own.name << "”, "
                << (own.hasRepository ? "which a repository has" : "which no repository has") << '\n';
      describe();
    });
  }

 private:
  void describe() {
    request_ = packages_.describe(path_, [this](const std::optional<PackageFacts>& facts) {
      if (!facts) return QCoreApplication::exit(1);
      std::cout << path_ << " has “" << facts->name << "”, version " << facts->version << '\n';
      install();
    });
  }

  void install() {
    request_ = packages_.install(path_, [](Installation installation, const std::string& reason) {
      std::cout << (installation == Installation::done ? "installed" : "not installed: " + reason) << std::endl;
      QCoreApplication::exit(installation == Installation::done ? 0 : 1);
    });
  }

  SystemPackages packages_;
  std::string path_;
  PackageRequest request_;
};

}  // namespace

int main(int count, char** values) {
  if (count != 2) return 2;
  const QCoreApplication application(count, values);
  QtEventLoop loop;
  Update update(loop, values[1]);
  update.start();
  return QCoreApplication::exec();
}
