#include "platform/linux/updates/signature.h"

#include <openssl/evp.h>

#include <algorithm>
#include <memory>
#include <string>

#include "values/base64.h"

namespace {

constexpr std::size_t keySize = 32;
constexpr std::size_t signatureSize = 64;

struct Freer {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

// Returns none that is not of this size: an empty text.
std::string decoded(std::string_view base64, std::size_t size) {
  const std::string bytes = isCanonicalBase64(base64) ? decodeBase64(base64) : "";
  return bytes.size() == size ? bytes : "";
}

const unsigned char* bytesOf(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

}  // namespace

bool isSignedBy(std::string_view publicKey, const SignedBytes& bytes) {
  const std::string keyBytes = decoded(publicKey, keySize);
  const std::string signature = decoded(bytes.signature, signatureSize);
  const bool isPlaceholder = std::ranges::all_of(keyBytes, [](char byte) { return byte == '\0'; });
  if (isPlaceholder || signature.empty()) return false;
  const std::unique_ptr<EVP_PKEY, Freer> key(
      EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytesOf(keyBytes), keyBytes.size()));
  const std::unique_ptr<EVP_MD_CTX, Freer> context(EVP_MD_CTX_new());
  if (!key || !context || EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) != 1) return false;
  return EVP_DigestVerify(context.get(), bytesOf(signature), signature.size(), bytesOf(bytes.content),
                          bytes.content.size()) == 1;
}
