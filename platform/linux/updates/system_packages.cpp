#include "platform/linux/updates/system_packages.h"

#include <algorithm>
#include <map>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "platform/linux/updates/command.h"
#include "platform/linux/updates/package_kit.h"
#include "values/harmless_text.h"

namespace {

constexpr const char* installer = "/usr/bin/apt-get";
constexpr int dismissed = 126;      // of pkexec: the user has closed the dialog
constexpr int notAuthorized = 127;  // of pkexec: not allowed, or there is no way to ask; also: there is no pkexec

using Words = std::vector<std::string>;

// Which package a file belongs to.
Words ownerQuery(const std::string& file) { return {"dpkg-query", "--search", file}; }

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The first error of apt's output, or its last line.
std::string reasonIn(const std::string& output) {
  std::string reason;
  for (const std::string& line : linesOf(output)) {
    if (line.starts_with("E: ")) return harmlessLine(line.substr(3));
    if (!line.empty()) reason = line;
  }
  return reason.empty() ? "apt-get failed without giving a reason." : harmlessLine(reason);
}

// Finds the program's package, and then whether a repository offers it.
class OwnSearch {
 public:
  using Found = std::function<void(const OwnPackage&)>;

  OwnSearch(EventLoop& loop, const std::string& executable, Found found)
      : loop_(loop),
        found_(std::move(found)),
        command_(std::make_unique<Command>(loop, ownerQuery(executable),
                                           [this](const CommandResult& result) { findRepository(result); })) {}

 private:
  void findRepository(const CommandResult& result) {
    if (result.status == 0) own_.name = packageIn(result.output);
    if (own_.name.empty()) return finish();
    // Lists the versions that repositories offer, and not what is only installed.
    command_ = std::make_unique<Command>(loop_, Words{"apt-cache", "madison", own_.name},
                                         [this](const CommandResult& versions) {
                                           own_.hasRepository = versions.status == 0 && !versions.output.empty();
                                           finish();
                                         });
  }

  void finish() {
    const Found found = std::move(found_);  // it may destroy this
    found(OwnPackage(own_));
  }

  EventLoop& loop_;
  Found found_;
  OwnPackage own_;
  std::unique_ptr<Command> command_;
};

// Installs a package by the first way that there is.
class InstallationAttempt {
 public:
  using Finished = std::function<void(Installation, const std::string& reason)>;

  InstallationAttempt(EventLoop& loop, FileManager& fileManager, std::string path, Finished finished)
      : loop_(loop), fileManager_(fileManager), path_(std::move(path)), finished_(std::move(finished)) {}

  // A program that belongs to no package is not replaced by one.
  void start(const std::string& executable) {
    command_ = std::make_unique<Command>(loop_, ownerQuery(executable), [this](const CommandResult& result) {
      if (result.status != 0 || packageIn(result.output).empty()) return show();
      askPackageKit();
    });
  }

 private:
  void askPackageKit() {
    packageKit_ = std::make_unique<PackageKitInstallation>(
        loop_, path_, [this](std::optional<Installation> installation, const std::string& reason) {
          if (!installation) return runApt();
          finish(*installation, harmlessLine(reason));
        });
  }

  void runApt() {
    command_ = std::make_unique<Command>(loop_, Words{"pkexec", installer, "install", "--yes", "--no-remove", path_},
                                         [this](const CommandResult& result) { readApt(result); });
  }

  void readApt(const CommandResult& result) {
    if (result.status == notAuthorized) return show();
    if (result.status == dismissed) return finish(Installation::cancelled, "");
    if (result.status == 0) return finish(Installation::done, "");
    finish(Installation::failed, reasonIn(result.output));
  }

  void show() {
    fileManager_.reveal(path_);
    finish(Installation::left, "");
  }

  void finish(Installation installation, const std::string& reason) {
    const Finished finished = std::move(finished_);  // it may destroy this
    finished(installation, std::string(reason));
  }

  EventLoop& loop_;
  FileManager& fileManager_;
  std::string path_;
  Finished finished_;
  std::unique_ptr<Command> command_;
  std::unique_ptr<PackageKitInstallation> packageKit_;
};

}  // namespace

SystemPackages::SystemPackages(EventLoop& loop, std::string executable)
    : loop_(loop), executable_(std::move(executable)), fileManager_(loop) {}

PackageRequest SystemPackages::findOwn(std::function<void(const OwnPackage&)> found) {
  return std::make_shared<OwnSearch>(loop_, executable_, std::move(found));
}

PackageRequest SystemPackages::describe(const std::string& path,
                                        std::function<void(const std::optional<PackageFacts>&)> described) {
  return std::make_shared<Command>(loop_, Words{"dpkg-deb", "--field", path, "Package", "Version", "Architecture"},
                                   [described = std::move(described)](const CommandResult& result) {
                                     described(result.status == 0 ? factsIn(result.output) : std::nullopt);
                                   });
}

PackageRequest SystemPackages::install(const std::string& path,
                                       std::function<void(Installation, const std::string& reason)> finished) {
  const auto attempt = std::make_shared<InstallationAttempt>(loop_, fileManager_, path, std::move(finished));
  attempt->start(executable_);
  return attempt;
}

std::string packageIn(const std::string& search) {
  for (const std::string& line : linesOf(search)) {
    const std::size_t end = line.find(": ");
    if (end == std::string::npos || line.starts_with("diversion by ")) continue;
    std::string name = line.substr(0, line.find_first_of(":,"));  // without its processor, and the first of several
    if (!name.empty()) return name;
  }
  return "";
}

std::optional<PackageFacts> factsIn(const std::string& fields) {
  std::map<std::string, std::string> values;
  for (const std::string& line : linesOf(fields))
    if (const std::size_t end = line.find(": "); end != std::string::npos)
      values[line.substr(0, end)] = line.substr(end + 2);
  std::string version = values["Version"];
  version.erase(0, version.find(':') == std::string::npos ? 0 : version.find(':') + 1);
  version.erase(std::min(version.rfind('-'), version.size()));
  const PackageFacts facts{values["Package"], version, values["Architecture"]};
  if (facts.name.empty() || facts.version.empty() || facts.processor.empty()) return std::nullopt;
  return facts;
}
