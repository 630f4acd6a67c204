// The order of titles, through Foundation.
#pragma once

#include "platform/collation.h"

// Uses localizedStandardCompare: of NSString, as the Finder does. Different texts that are equal by its rules, such as
// two encodings of the same letter, are ordered by UTF-16 units.
class FoundationCollation : public Collation {
 public:
  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override;
};
