#include "platform/linux/updates/package_download.h"

#include <utility>

#include "platform/error.h"
#include "platform/linux/updates/signature.h"
#include "platform/linux/updates/version.h"
#include "values/harmless_text.h"

namespace {

constexpr const char* packageName = "quillery";
constexpr const char* fileName = "quillery.deb";
constexpr std::uint64_t largestPackage = std::uint64_t{256} << 20;

[[noreturn]] void refuse(const std::string& reason) {
  throw Error("Updates", 3, "The update was not installed: " + reason + ".");
}

std::string quoted(const std::string& text) { return "“" + harmlessLine(text) + "”"; }

}  // namespace

void PackageDownload::start() {
  attempt([this] {
    if (item_.length == 0 || item_.length > largestPackage) refuse("the list of updates has a wrong length for it");
    if (!tools_.source.mayRead(item_.address)) refuse("its address is not secure");
    file_ = std::make_unique<PrivateFile>(tools_.downloadFolder, fileName);
    transfer_ = tools_.network.get(
        item_.address, {.mayFollowTo = [this](const std::string& address) { return tools_.source.mayRead(address); },
                        .received = [this](std::string_view bytes) { return receive(bytes); },
                        .finished = [this](const std::optional<std::string>& failure) { verify(failure); }});
  });
}

bool PackageDownload::receive(std::string_view bytes) {
  const bool isKept = attempt([&] {
    if (bytes.size() > item_.length - file_->size()) refuse("it is longer than announced");
    file_->append(bytes);
  });
  if (isKept) handlers_.advanced(file_->size());
  return isKept;
}

// Checks the length first, because that is cheap, and lets nothing read the package before its signature holds.
void PackageDownload::verify(const std::optional<std::string>& failure) {
  if (failure) return finish(failure);
  attempt([this] {
    if (file_->size() != item_.length) refuse("it is shorter than announced");
    if (!isSignedBy(tools_.source.publicKey, {file_->sealed(), item_.signature}))
      refuse("its signature is not that of the maker");
    request_ = tools_.packages.describe(file_->path(), [this](const std::optional<PackageFacts>& facts) {
      if (attempt([&] { requireAnnounced(facts); })) finish(std::nullopt);
    });
  });
}

// A signature holds for a package, not for what the feed says of it: an attacker could offer an older version as new.
void PackageDownload::requireAnnounced(const std::optional<PackageFacts>& facts) const {
  if (!facts) refuse("it is not a package");
  if (facts->name != packageName) refuse("it is the package " + quoted(facts->name));
  if (facts->processor != tools_.system.processor)
    refuse("it is for processors of the kind " + quoted(facts->processor));
  if (Version(facts->version) <= Version(tools_.ownVersion))
    refuse("it has version " + quoted(facts->version) + ", which is not newer");
  if (Version(facts->version) != Version(item_.version))
    refuse("it has version " + quoted(facts->version) + ", not the announced one");
}

// Returns false if the step failed; this may be destroyed then.
bool PackageDownload::attempt(const std::function<void()>& step) {
  try {
    step();
    return true;
  } catch (const Error& error) {
    finish(error.description());
    return false;
  }
}

void PackageDownload::finish(const std::optional<std::string>& failure) {
  const auto finished = std::move(handlers_.finished);  // it may destroy this
  finished(failure);
}
