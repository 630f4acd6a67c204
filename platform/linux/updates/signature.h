// Signatures of updates.
#pragma once

#include <string_view>

struct SignedBytes {
  std::string_view content;
  std::string_view signature;  // in base64
};

// Returns true if the signature is the Ed25519 signature of the content by the owner of this public key, which is in
// base64. Returns false for a key or signature of the wrong length, and for the key of 32 zeros that stands for none.
bool isSignedBy(std::string_view publicKey, const SignedBytes& bytes);
