// The order of titles by the Unicode collation algorithm, with the rules of the user's locale.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/collation.h"
#include "platform/linux/collation_locale.h"
#include "platform/linux/primary_ranks.h"

struct UCollator;

// Letters count before accents and accents before case; numbers compare by their value. Of two texts that are equal by
// these rules, the one with fewer leading zeros in the first number that differs comes first; otherwise code points
// decide. An unpaired surrogate counts as a code point.
class IcuCollation : public Collation {
 public:
  // Uses the rules of a locale by its ICU name ("sv_SE"), or the root collation if ICU does not know the locale. Throws
  // Error if ICU's data are not installed.
  explicit IcuCollation(const std::string& locale = collationLocale());

  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override;

 private:
  std::strong_ordering compareByLocale(std::u16string_view a, std::u16string_view b) const;

  struct Closer {
    void operator()(UCollator* collator) const;
  };
  using Collator = std::unique_ptr<UCollator, Closer>;

  Collator rules_;
  Collator lettersOnly_;  // ignores accents and case; only for locales where accents compare from the end, else null
  bool ordersMarks_;      // the rules put combining marks into canonical order first, as in Vietnamese
  std::optional<PrimaryRanks> ranks_;  // always present
};
