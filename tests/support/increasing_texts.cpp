#include "tests/support/increasing_texts.h"

#include <gtest/gtest.h>

#include <compare>
#include <sstream>

namespace {

// Returns the units in hexadecimal, because different texts may look the same in a message.
std::string units(const std::u16string& text) {
  std::ostringstream shown;
  for (const char16_t unit : text) shown << std::hex << static_cast<unsigned>(unit) << ' ';
  return shown.str();
}

int sign(std::strong_ordering order) { return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0; }

}  // namespace

void expectIncreasing(const Collation& collation, const std::vector<std::u16string>& texts) {
  for (std::size_t first = 0; first < texts.size(); ++first)
    for (std::size_t second = 0; second < texts.size(); ++second)
      EXPECT_EQ(sign(collation.localizedStandardCompare(texts[first], texts[second])), sign(first <=> second))
          << units(texts[first]) << "and " << units(texts[second]);
}
