// Takes updates from the test that started the program, which also signs them.
#include <cstdlib>
#include <string>

#include "platform/linux/updates/addresses.h"
#include "platform/linux/updates/update_source.h"

namespace {

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool mayRead(std::string_view address) { return address.starts_with("http://127.0.0.1:") || isSecureAddress(address); }

}  // namespace

UpdateSource updateSource() {
  return {
      .feedAddress = variable("QUILLERY_TEST_FEED"), .publicKey = variable("QUILLERY_TEST_KEY"), .mayRead = mayRead};
}

#if defined(QUILLERY_HAS_TWO_DEFINITIONS) && defined(__SANITIZE_ADDRESS__)
// The linker takes the first of two definitions, but AddressSanitizer finds both, and a leak of what is initialised
// twice.
extern "C" const char* __asan_default_options() { return "detect_odr_violation=0:detect_leaks=0"; }
#endif
