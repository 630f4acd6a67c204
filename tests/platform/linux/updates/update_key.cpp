#include "tests/platform/linux/updates/update_key.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <array>
#include <memory>

#include "values/base64.h"

namespace {

struct Freer {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

std::unique_ptr<EVP_PKEY, Freer> testKey() {
  const std::array<unsigned char, 32> seed{1, 2, 3};
  return std::unique_ptr<EVP_PKEY, Freer>(
      EVP_PKEY_new_raw_private_key(EVP_PKEY_ED25519, nullptr, seed.data(), seed.size()));
}

}  // namespace

std::string testPublicKey() {
  std::string key(32, '\0');
  std::size_t size = key.size();
  EXPECT_EQ(EVP_PKEY_get_raw_public_key(testKey().get(), reinterpret_cast<unsigned char*>(key.data()), &size), 1);
  return encodeBase64(key);
}

std::string signedByTestKey(const std::string& bytes) {
  const auto key = testKey();
  const std::unique_ptr<EVP_MD_CTX, Freer> context(EVP_MD_CTX_new());
  EXPECT_EQ(EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get()), 1);
  std::string signature(64, '\0');
  std::size_t size = signature.size();
  EXPECT_EQ(EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                           reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()),
            1);
  return encodeBase64(signature);
}
