// The source of updates of the shipped program.
#include "platform/linux/updates/addresses.h"
#include "platform/linux/updates/update_source.h"
#include "platform/product.h"

UpdateSource updateSource() {
  return {.feedAddress = std::string(product::feedAddress),
          .publicKey = std::string(product::feedPublicKey),
          .mayRead = isSecureAddress};
}
