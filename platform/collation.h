// The order of titles, the same as in the user's file manager.
#pragma once

#include <compare>
#include <string_view>

class Collation {
 public:
  virtual ~Collation() = default;

  // Compares two texts by the rules of the user's locale: letters count before case, and runs of digits compare by
  // their numeric value. This is a strict total order: only identical texts are equal. Unpaired surrogates are allowed.
  virtual std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const = 0;
};
