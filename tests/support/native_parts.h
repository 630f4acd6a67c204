// The native parts that a virtual machine uses: property lists, calendars and collation.
#pragma once

#ifdef __APPLE__

#include "platform/macos/foundation_calendar.h"
#include "platform/macos/foundation_collation.h"
#include "platform/macos/foundation_property_lists.h"

using NativePropertyLists = FoundationPropertyLists;
using NativeCalendars = FoundationCalendars;
using EnglishCollation = FoundationCollation;  // uses the user's language, which must be English for the tests

#else

#include "platform/linux/civil_calendar.h"
#include "platform/linux/icu_collation.h"
#include "platform/linux/plist/property_list_codec.h"

using NativePropertyLists = PropertyListCodec;
using NativeCalendars = CivilCalendars;

class EnglishCollation : public IcuCollation {
 public:
  EnglishCollation() : IcuCollation("en") {}
};

#endif
