// An updater on a virtual clock, with a network, windows and packages that tests script.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/updates/update_controller.h"
#include "tests/support/journal.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/virtual_main_loop.h"
#include "tests/support/virtual_user_defaults.h"

// What a server replies to a request.
struct Reply {
  std::string body;
  std::optional<std::string> redirection = std::nullopt;  // to this address first
  std::optional<std::string> failure = std::nullopt;      // after the body
  bool isEndless = false;                                 // sends the body again and again
  bool isSilent = false;                                  // sends nothing
};

class ScriptedNetwork : public Network {
 public:
  explicit ScriptedNetwork(VirtualMainLoop& loop) : loop_(loop) {}
  std::unique_ptr<Transfer> get(const std::string& address, TransferHandlers handlers) override;

  std::map<std::string, Reply> replies;
  std::vector<std::string> requests;
  std::uint64_t sent = 0;  // bytes
  int transfers = 0;       // in progress

 private:
  class ScriptedTransfer;

  VirtualMainLoop& loop_;
};

class ScriptedWindows : public UpdateWindows {
 public:
  explicit ScriptedWindows(VirtualMainLoop& loop) : loop_(loop) {}

  void showFound(const UpdateNews& news, std::function<void(UpdateAnswer)> answered) override;
  void showProgress(const std::string& text, Work cancelled) override;
  void setProgress(std::uint64_t done, std::uint64_t whole) override;
  void disableCancel() override { canCancel = false; }
  void showMessage(const std::string& heading, const std::string& text, Work closed) override;
  void bringToFront() override { ++timesInFront; }
  void close() override;

  // What the user does. Runs the loop.
  void answer(UpdateAnswer answer);
  void press();  // the only button

  std::string open;     // "found", "progress", "message" or empty
  std::string heading;  // of the open window
  std::string text;
  std::string notes;
  std::string progress;  // "10/20"
  bool canCancel = false;
  int timesInFront = 0;

 private:
  void show(const std::string& kind, const std::string& title, const std::string& body);

  VirtualMainLoop& loop_;
  std::function<void(UpdateAnswer)> answered_;
  Work pressed_;
};

class ScriptedPackages : public Packages {
 public:
  explicit ScriptedPackages(VirtualMainLoop& loop) : loop_(loop) {}

  PackageRequest findOwn(std::function<void(const OwnPackage&)> found) override;
  PackageRequest describe(const std::string& path,
                          std::function<void(const std::optional<PackageFacts>&)> described) override;
  PackageRequest install(const std::string& path,
                         std::function<void(Installation, const std::string& reason)> finished) override;

  OwnPackage own{"quillery", false};
  std::optional<PackageFacts> facts = PackageFacts{"quillery", "0.2.0", "amd64"};
  Installation installation = Installation::done;
  std::string reason;
  int described = 0;
  std::vector<std::string> installed;  // the contents of the files
  std::string installedPath;           // of the last file
  std::function<void()> beforeInstalling = [] {};

 private:
  VirtualMainLoop& loop_;
};

// Records the calls of the updater.
class RecordingDelegate : public UpdaterDelegate {
 public:
  bool supportsGentleScheduledUpdateReminders() const override { return supportsReminders; }
  bool standardUserDriverShouldHandleShowingScheduledUpdate(bool inImmediateFocus) override;
  void standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) override;
  void standardUserDriverDidReceiveUserAttention() override { calls.emplace_back("attention"); }
  void standardUserDriverWillFinishUpdateSession() override { calls.emplace_back("finish"); }
  bool shouldPostponeRelaunch(Work install) override;

  bool supportsReminders = true;
  bool letsUpdaterShow = false;
  bool postpones = false;
  Work postponed;
  std::vector<std::string> calls;
};

class UpdateTest : public testing::Test {
 protected:
  UpdateTest();

  // Starts the updater, as the program does when it starts.
  void start();
  // Publishes a feed with one newer version, and its package.
  void publish();
  void publishFeed();
  // Requests a check, and runs it.
  void check();
  // Requests a check, and accepts the update.
  void install();
  void allowChecks() { defaults_.put("SUEnableAutomaticChecks", true); }
  std::vector<std::string> calls() { return std::exchange(delegate_->calls, {}); }
  // How many downloads are on disk.
  std::size_t downloads() const;

  Journal journal_;
  VirtualMainLoop loop_{journal_};
  VirtualUserDefaults defaults_{journal_};
  ScriptedNetwork network_{loop_};
  ScriptedWindows windows_{loop_};
  ScriptedPackages packages_{loop_};
  ScratchFolder scratch_;
  std::shared_ptr<RecordingDelegate> delegate_ = std::make_shared<RecordingDelegate>();
  std::string publicKey_;
  std::string feedAddress_ = "https://example.com/appcast.xml";
  int relaunches_ = 0;
  bool canRelaunch_ = true;

  // What the feed says of the newer version.
  std::string package_ = "the package";
  std::string signature_;
  std::string length_;
  std::string packageAddress_ = "https://example.com/quillery.deb";
  std::string version_ = "0.2.0";
  std::string notes_ = "- Sorts faster.";

  std::shared_ptr<UpdaterController> controller_;
};
