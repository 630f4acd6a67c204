// What an attacker could change on the way from the maker to the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/linux/updates/appcast.h"
#include "tests/platform/linux/updates/update_key.h"
#include "tests/platform/linux/updates/update_test.h"
#include "values/base64.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class UpdateAttack : public UpdateTest {
 protected:
  // Accepts the update, which must be refused for this reason before anything reads the package.
  void expectRefusal(const std::string& reason) {
    install();
    EXPECT_EQ(windows_.heading, "The update failed");
    EXPECT_THAT(windows_.text, HasSubstr(reason));
    EXPECT_THAT(packages_.installed, IsEmpty());
    EXPECT_EQ(relaunches_, 0);
    EXPECT_EQ(downloads(), 0);
    EXPECT_EQ(network_.transfers, 0);
  }
};

TEST_F(UpdateAttack, withAnotherPackageIsRefused) {
  network_.replies[packageAddress_].body = "bad package";
  expectRefusal("its signature is not that of the maker");
  EXPECT_EQ(packages_.described, 0);
}

TEST_F(UpdateAttack, withAnotherKeyIsRefused) {
  publicKey_ = encodeBase64(
      "\xfc\x51\xcd\x8e\x62\x18\xa1\xa3\x8d\xa4\x7e\xd0\x02\x30\xf0\x58\x08\x16\xed\x13\xba\x33"
      "\x03\xac\x5d\xeb\x91\x15\x48\x90\x80\x25");
  expectRefusal("its signature is not that of the maker");
  EXPECT_EQ(packages_.described, 0);
}

TEST_F(UpdateAttack, withoutASignatureIsRefused) {
  signature_ = "";
  publishFeed();
  expectRefusal("its signature is not that of the maker");
}

TEST_F(UpdateAttack, onAProgramWithoutAKeyIsRefused) {
  publicKey_ = encodeBase64(std::string(32, '\0'));
  expectRefusal("its signature is not that of the maker");
}

TEST_F(UpdateAttack, withHalfAPackageIsRefused) {
  network_.replies[packageAddress_].body = package_.substr(1);
  expectRefusal("it is shorter than announced");
  EXPECT_EQ(packages_.described, 0);
}

TEST_F(UpdateAttack, withALongerPackageIsRefused) {
  network_.replies[packageAddress_].body = package_ + "!";
  expectRefusal("it is longer than announced");
}

TEST_F(UpdateAttack, withAnEndlessPackageIsStoppedAtItsLength) {
  package_ = std::string(100'000, 'x');
  publish();
  network_.replies[packageAddress_].isEndless = true;
  network_.sent = 0;
  expectRefusal("it is longer than announced");
  EXPECT_LT(network_.sent, 110'000);
}

TEST_F(UpdateAttack, withoutALengthIsRefusedBeforeTheDownload) {
  for (const char* length : {"0", "-1", "9999999999999", "many"}) {
    length_ = length;
    publishFeed();
    expectRefusal("the list of updates has a wrong length for it");
    windows_.press();
  }
  EXPECT_THAT(network_.requests, Each(feedAddress_));
}

TEST_F(UpdateAttack, withAnOlderPackageIsRefused) {
  packages_.facts->version = "0.1.0";
  expectRefusal("it has version “0.1.0”, which is not newer");
}

TEST_F(UpdateAttack, withAVersionThatIsNotTheAnnouncedIsRefused) {
  version_ = "9.0";
  publish();
  expectRefusal("it has version “0.2.0”, not the announced one");
}

TEST_F(UpdateAttack, withAnotherSignedFileIsRefused) {
  packages_.facts->name = "other\n";
  expectRefusal("it is the package “other\\u{0A}”");
  windows_.press();
  packages_.facts = PackageFacts{"quillery", "0.2.0", "arm64"};
  expectRefusal("it is for processors of the kind “arm64”");
  windows_.press();
  packages_.facts.reset();
  expectRefusal("it is not a package");
}

TEST_F(UpdateAttack, withAnInsecureAddressIsRefused) {
  packageAddress_ = "http://example.com/quillery.deb";
  publish();
  expectRefusal("its address is not secure");
  EXPECT_THAT(network_.requests, ElementsAre(feedAddress_));
}

TEST_F(UpdateAttack, withAFeedAtAnInsecureAddressIsRefused) {
  feedAddress_ = "http://example.com/appcast.xml";
  publishFeed();
  check();
  EXPECT_EQ(windows_.text, "The address of the list of updates is not secure.");
  EXPECT_THAT(network_.requests, IsEmpty());
}

TEST_F(UpdateAttack, withARedirectionToPlainHttpIsRefused) {
  network_.replies[packageAddress_].redirection = "http://example.com/quillery.deb";
  expectRefusal("redirection refused");
  windows_.press();
  network_.replies[feedAddress_].redirection = "http://example.com/appcast.xml";
  check();
  EXPECT_EQ(windows_.text, "redirection refused");
  windows_.press();
  network_.replies[feedAddress_].redirection = "https://example.org/appcast.xml";
  check();
  EXPECT_EQ(windows_.open, "found") << "a secure one is followed";
}

TEST_F(UpdateAttack, withAnEndlessFeedIsStopped) {
  network_.replies[feedAddress_] = {.body = std::string(1000, ' '), .isEndless = true};
  check();
  EXPECT_EQ(windows_.text, "The list of updates couldn’t be read: it is too large.");
  EXPECT_LT(network_.sent, largestAppcast + 10'000);
  EXPECT_EQ(network_.transfers, 0);
}

TEST_F(UpdateAttack, onTheVerifiedFileIsNoticed) {
  packages_.beforeInstalling = [this] {
    const std::string folder = scratch_.path("cache/quillery");
    const std::string path = folder + "/" + namesIn(folder)[0] + "/quillery.deb";
    std::filesystem::remove(path);
    makeFile(path, "the package");
  };
  expectRefusal("its file was changed");
}

TEST_F(UpdateAttack, onTheDownloadNeedsTheUsersRights) {
  network_.replies[packageAddress_].isSilent = true;
  install();
  const std::string folder = scratch_.path("cache/quillery");
  EXPECT_EQ(modeOf(folder), 0700U);
  EXPECT_EQ(modeOf(folder + "/" + namesIn(folder)[0]), 0700U);
  EXPECT_EQ(modeOf(folder + "/" + namesIn(folder)[0] + "/quillery.deb"), 0600U);
}

}  // namespace
