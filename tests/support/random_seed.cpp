#include "tests/support/random_seed.h"

#include <cstdio>
#include <cstdlib>
#include <random>

unsigned randomSeed() {
  const char* chosen = std::getenv("QUILLERY_SEED");
  const unsigned seed =
      chosen != nullptr ? static_cast<unsigned>(std::strtoul(chosen, nullptr, 10)) : std::random_device()();
  std::printf("seed: QUILLERY_SEED=%u\n", seed);
  return seed;
}
