#include "tests/support/random_seed.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>

namespace {

std::optional<unsigned> chosen(const char* variable) {
  const char* text = std::getenv(variable);
  return text != nullptr ? std::optional(static_cast<unsigned>(std::strtoul(text, nullptr, 10))) : std::nullopt;
}

}  // namespace

unsigned randomSeed() {
  const std::optional<unsigned> seed = chosen("QUILLERY_SEED");
  const unsigned taken = seed ? *seed : std::random_device()();
  std::printf("seed: QUILLERY_SEED=%u\n", taken);
  return taken;
}

unsigned randomRounds() { return chosen("QUILLERY_ROUNDS").value_or(10'000); }
