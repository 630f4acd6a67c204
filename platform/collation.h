// The order of titles, as the user's file manager has it.
#pragma once

#include <compare>
#include <string_view>

class Collation {
 public:
  virtual ~Collation() = default;

  // Compares UTF-16 text by the rules of the user's locale: letters before case, digits by their number, and only
  // identical text as equal. A strict total order.
  virtual std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const = 0;
};
