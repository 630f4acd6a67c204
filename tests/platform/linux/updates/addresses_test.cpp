#include "platform/linux/updates/addresses.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(UpdateAddress, isReadOverHttpsOnly) {
  for (const char* address : {"https://quillery.example.com/appcast.xml", "HTTPS://a", "https://a:8443/b?c#d"})
    EXPECT_TRUE(isSecureAddress(address)) << address;
  for (const char* address : {"http://quillery.example.com/", "file:///etc/passwd", "ftp://a/", "https:/a", "https://",
                              "//a", "", "a", "javascript:https://a", " https://a", "data:,https://a"})
    EXPECT_FALSE(isSecureAddress(address)) << address;
}

TEST(UpdateAddress, hasAHostAndNothingHidden) {
  for (const std::string address :
       {"https:///a", "https://:80/", "https://ann@a/", "https://a\\@b/", "https://a b", "https://a\n", "https://ä/"})
    EXPECT_EQ(isSecureAddress(address), address == "https://a\\@b/") << address;
}

}  // namespace
