// The order of titles by the Unicode collation algorithm, tailored to the user's locale.
#pragma once

#include <memory>
#include <string>

#include "platform/collation.h"

struct UCollator;

// The locale that LC_ALL, LC_COLLATE or LANG names, the first of them that is not empty, without its encoding and
// modifier: "sv_SE". "root" where that is no language: for "C", "POSIX", and where nothing is set.
std::string collationLocale();

// Letters before accents before case, numbers by their value. What is the same by these rules is ordered by fewer
// leading zeros in its numbers, as decided by the first number that has not as many in both texts, and then by
// code points. Unpaired surrogates are code points like others.
class IcuCollation : public Collation {
 public:
  // The rules of a locale by its name in ICU ("sv_SE"); the root collation if ICU does not know it. Throws Error
  // if ICU's data are not installed.
  explicit IcuCollation(const std::string& locale = collationLocale());

  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override;

 private:
  struct Closer {
    void operator()(UCollator* collator) const;
  };
  using Collator = std::unique_ptr<UCollator, Closer>;

  Collator rules_;
  Collator lettersOnly_;  // the same without accents and case where accents count from the end, else none
};
