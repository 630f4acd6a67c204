// Random bookmark trees, and a fixture for tests on many of them.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/support/random_seed.h"
#include "values/plist_value.h"

// Makes trees mostly of Safari's shape, but with every deviation that the sort must handle.
class TreeMaker {
 public:
  explicit TreeMaker(unsigned seed) : random_(seed) {}

  PlistValue root() { return node(3); }

 private:
  std::size_t below(std::size_t limit);
  bool oneIn(std::size_t count) { return below(count) == 0; }
  PlistValue randomTitle();
  PlistValue randomType();
  PlistValue children(unsigned levels);
  PlistValue node(unsigned levels);
  PlistValue display();

  std::mt19937 random_;
};

class RandomTreeTest : public testing::Test {
 protected:
  // Calls `check` for each tree until one fails.
  template <class Check>
  void forEachTree(Check check) {
    TreeMaker maker(seed_);
    for (unsigned round = 0; round < trees_ && !HasFailure(); ++round) {
      SCOPED_TRACE("QUILLERY_SEED=" + std::to_string(seed_) + ", tree " + std::to_string(round));
      check(maker.root());
    }
  }
  unsigned trees() const { return trees_; }

 private:
  const unsigned trees_ = randomRounds();
  const unsigned seed_ = randomSeed();
};
