// Where updates come from, and whose they are.
#pragma once

#include <string>
#include <string_view>

struct UpdateSource {
  std::string feedAddress;
  std::string publicKey;  // that the packages must be signed by; Ed25519, in base64

  // Returns true for the addresses that may be read, also after a redirection.
  bool (*mayRead)(std::string_view address);
};

// Returns the source that is linked into the program. That of the shipped program is product_update_source.cpp; a test
// links another one. Nothing that is outside of the program changes it.
UpdateSource updateSource();
