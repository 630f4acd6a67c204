// The order of titles by Foundation.
#pragma once

#include "platform/collation.h"

// NSString's localizedStandardCompare:, by which the Finder sorts. What it does not tell apart, such as two ways to
// write the same letter, is ordered by UTF-16 units.
class FoundationCollation : public Collation {
 public:
  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override;
};
