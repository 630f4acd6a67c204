#include "platform/linux/updates/signature.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/linux/updates/update_key.h"
#include "values/base64.h"

namespace {

// RFC 8032, 7.1, TEST 3.
const std::string standardKey = encodeBase64(
    "\xfc\x51\xcd\x8e\x62\x18\xa1\xa3\x8d\xa4\x7e\xd0\x02\x30\xf0\x58\x08\x16\xed\x13\xba\x33\x03\xac\x5d\xeb\x91\x15"
    "\x48\x90\x80\x25");
const std::string standardSignature = encodeBase64(
    "\x62\x91\xd6\x57\xde\xec\x24\x02\x48\x27\xe6\x9c\x3a\xbe\x01\xa3\x0c\xe5\x48\xa2\x84\x74\x3a\x44\x5e\x36\x80\xd7"
    "\xdb\x5a\xc3\xac\x18\xff\x9b\x53\x8d\x16\xf2\x90\xae\x67\xf7\x60\x98\x4d\xc6\x59\x4a\x7c\x15\xe9\x71\x6e\xd2\x8d"
    "\xc0\x27\xbe\xce\xea\x1e\xc4\x0a");

TEST(UpdateSignature, isThatOfTheStandard) { EXPECT_TRUE(isSignedBy(standardKey, {"\xaf\x82", standardSignature})); }

TEST(UpdateSignature, holdsForItsContentOnly) {
  const std::string signature = signedByTestKey("package");
  EXPECT_TRUE(isSignedBy(testPublicKey(), {"package", signature}));
  for (const char* other : {"Package", "packag", "package ", ""})
    EXPECT_FALSE(isSignedBy(testPublicKey(), {other, signature})) << other;
}

TEST(UpdateSignature, holdsForItsKeyOnly) {
  EXPECT_FALSE(isSignedBy(standardKey, {"package", signedByTestKey("package")}));
}

TEST(UpdateSignature, neverHoldsForThePlaceholderKey) {
  const std::string zeros = encodeBase64(std::string(32, '\0'));
  // The all-zero key is a point of small order: this signature would hold for about one content in four.
  const std::string forged = encodeBase64("\1" + std::string(63, '\0'));
  for (int content = 0; content < 16; ++content) EXPECT_FALSE(isSignedBy(zeros, {std::to_string(content), forged}));
}

TEST(UpdateSignature, isRefusedInAnyOtherForm) {
  const std::string signature = signedByTestKey("package");
  for (const std::string& other : {std::string(), signature + "AAAA", signature.substr(4), "!" + signature.substr(1),
                                   signature.substr(0, signature.size() - 1)})
    EXPECT_FALSE(isSignedBy(testPublicKey(), {"package", other})) << other;
  for (const char* key : {"", "AAAA", "no key"}) EXPECT_FALSE(isSignedBy(key, {"package", signature})) << key;
}

}  // namespace
