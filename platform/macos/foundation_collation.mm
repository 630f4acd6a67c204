#include "platform/macos/foundation_collation.h"

#include "platform/macos/objective_c.h"

namespace {

// Does not copy the units, because a sort compares each title many times.
NSString* stringAt(std::u16string_view units) {
  auto* const start = const_cast<unichar*>(reinterpret_cast<const unichar*>(units.data()));
  return [[NSString alloc] initWithCharactersNoCopy:start length:units.size() freeWhenDone:NO];
}

}  // namespace

std::strong_ordering FoundationCollation::localizedStandardCompare(std::u16string_view a, std::u16string_view b) const {
  @autoreleasepool {
    const NSComparisonResult order = [stringAt(a) localizedStandardCompare:stringAt(b)];
    return order == NSOrderedSame ? a <=> b : static_cast<NSInteger>(order) <=> 0;
  }
}
