#include "tests/platform/linux/updates/update_test.h"

#include <filesystem>
#include <utility>

#include "tests/platform/linux/updates/update_key.h"

class ScriptedNetwork::ScriptedTransfer : public Transfer {
 public:
  ScriptedTransfer(ScriptedNetwork& network, Reply reply, TransferHandlers handlers)
      : network_(network), reply_(std::move(reply)), handlers_(std::move(handlers)) {
    ++network_.transfers;
    if (!reply_.isSilent) later([this] { begin(); });
  }
  ~ScriptedTransfer() override { --network_.transfers; }

 private:
  // Runs a step in the next turn of the loop, unless this is destroyed before.
  void later(Work step) {
    network_.loop_.deliver([alive = std::weak_ptr(alive_), step = std::move(step)] {
      if (!alive.expired()) step();
    });
  }

  void begin() {
    if (reply_.redirection && !handlers_.mayFollowTo(*reply_.redirection)) return finish("redirection refused");
    send();
  }

  void send() {
    const std::size_t most = 1000;
    const std::string piece = reply_.body.substr(0, most);
    if (!reply_.isEndless) reply_.body.erase(0, piece.size());
    network_.sent += piece.size();
    const std::weak_ptr<int> alive = alive_;
    if (!piece.empty() && !handlers_.received(piece)) return;
    if (alive.expired()) return;
    if (reply_.body.empty()) return finish(reply_.failure);
    later([this] { send(); });
  }

  void finish(const std::optional<std::string>& failure) {
    const auto finished = handlers_.finished;
    finished(failure);
  }

  ScriptedNetwork& network_;
  Reply reply_;
  TransferHandlers handlers_;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

std::unique_ptr<Transfer> ScriptedNetwork::get(const std::string& address, TransferHandlers handlers) {
  requests.push_back(address);
  const auto found = replies.find(address);
  const Reply reply = found == replies.end() ? Reply{.body = "", .failure = "There is nothing."} : found->second;
  return std::make_unique<ScriptedTransfer>(*this, reply, std::move(handlers));
}

void ScriptedWindows::show(const std::string& kind, const std::string& title, const std::string& body) {
  open = kind;
  heading = title;
  text = body;
  notes = progress = "";
  canCancel = kind == "progress";
  answered_ = nullptr;
  pressed_ = nullptr;
}

void ScriptedWindows::showFound(const UpdateNews& news, std::function<void(UpdateAnswer)> answered) {
  show("found", news.heading, news.text);
  notes = news.notes;
  answered_ = std::move(answered);
}

void ScriptedWindows::showProgress(const std::string& body, Work cancelled) {
  show("progress", "", body);
  pressed_ = std::move(cancelled);
}

void ScriptedWindows::setProgress(std::uint64_t done, std::uint64_t whole) {
  EXPECT_EQ(open, "progress");
  progress = std::to_string(done) + "/" + std::to_string(whole);
}

void ScriptedWindows::showMessage(const std::string& title, const std::string& body, Work closed) {
  show("message", title, body);
  pressed_ = std::move(closed);
}

void ScriptedWindows::close() { show("", "", ""); }

void ScriptedWindows::answer(UpdateAnswer answer) {
  ASSERT_TRUE(answered_) << open << ": " << heading << text;
  std::exchange(answered_, nullptr)(answer);
  loop_.run();
}

void ScriptedWindows::press() {
  ASSERT_TRUE(pressed_) << open;
  std::exchange(pressed_, nullptr)();
  loop_.run();
}

namespace {

// Calls a handler in the next turn of the loop, unless the request is released before.
PackageRequest later(VirtualMainLoop& loop, const Work& handler) {
  const auto request = std::make_shared<Work>(handler);
  loop.deliver([weak = std::weak_ptr(request)] {
    if (const auto present = weak.lock()) (*present)();
  });
  return request;
}

}  // namespace

PackageRequest ScriptedPackages::findOwn(std::function<void(const OwnPackage&)> found) {
  return later(loop_, [this, found = std::move(found)] { found(own); });
}

PackageRequest ScriptedPackages::describe(const std::string& path,
                                          std::function<void(const std::optional<PackageFacts>&)> handler) {
  ++described;
  EXPECT_TRUE(std::filesystem::exists(path));
  return later(loop_, [this, handler = std::move(handler)] {
    beforeInstalling();
    handler(facts);
  });
}

PackageRequest ScriptedPackages::install(const std::string& path,
                                         std::function<void(Installation, const std::string& reason)> finished) {
  installed.push_back(contentOf(path));
  installedPath = path;
  return later(loop_, [this, finished = std::move(finished)] { finished(installation, reason); });
}

bool RecordingDelegate::standardUserDriverShouldHandleShowingScheduledUpdate(bool inImmediateFocus) {
  calls.emplace_back(inImmediateFocus ? "should show in focus" : "should show");
  return letsUpdaterShow;
}

void RecordingDelegate::standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) {
  calls.emplace_back(isUserInitiated ? "will show requested" : "will show scheduled");
}

bool RecordingDelegate::shouldPostponeRelaunch(Work install) {
  calls.emplace_back("relaunch?");
  if (postpones) postponed = std::move(install);
  return postpones;
}

UpdateTest::UpdateTest() : publicKey_(testPublicKey()) { publish(); }

void UpdateTest::start() {
  const auto mayRead = [](std::string_view address) { return address.starts_with("https://"); };
  controller_ = LinuxUpdater({.loop = loop_,
                              .userDefaults = defaults_,
                              .network = network_,
                              .windows = windows_,
                              .packages = packages_,
                              .source = {feedAddress_, publicKey_, mayRead},
                              .system = {.processor = "amd64", .version = "12", .isLikeDebian = true},
                              .ownVersion = "0.1.0",
                              .downloadFolder = scratch_.path("cache/quillery"),
                              .relaunch =
                                  [this] {
                                    ++relaunches_;
                                    return canRelaunch_;
                                  }})
                    .start(delegate_);
}

void UpdateTest::publish() {
  signature_ = signedByTestKey(package_);
  length_ = std::to_string(package_.size());
  network_.replies[packageAddress_] = {.body = package_};
  publishFeed();
}

void UpdateTest::publishFeed() {
  network_.replies[feedAddress_] = {
      .body =
          "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'><channel><item>"
          "<sparkle:version>" +
          version_ + "</sparkle:version><sparkle:minimumSystemVersion>12</sparkle:minimumSystemVersion><description>" +
          notes_ + "</description><enclosure url='" + packageAddress_ + "' length='" + length_ +
          "' sparkle:os='linux' sparkle:edSignature='" + signature_ + "'/></item></channel></rss>"};
}

void UpdateTest::check() {
  if (!controller_) start();
  controller_->checkForUpdates();
  loop_.run();
}

void UpdateTest::install() {
  check();
  windows_.answer(UpdateAnswer::install);
}

std::size_t UpdateTest::downloads() const {
  const std::string folder = scratch_.path("cache/quillery");
  return std::filesystem::exists(folder) ? namesIn(folder).size() : 0;
}
