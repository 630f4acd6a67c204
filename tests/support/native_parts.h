// What the virtual machine takes from the system that the tests run on, because the program has nothing else to test it
// against: property lists, calendars and the order of titles.
#pragma once

#ifdef __APPLE__

#include "platform/macos/foundation_calendar.h"
#include "platform/macos/foundation_collation.h"
#include "platform/macos/foundation_property_lists.h"

using NativePropertyLists = FoundationPropertyLists;
using NativeCalendars = FoundationCalendars;
using EnglishCollation = FoundationCollation;  // the user's language, really, which is to be English then

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
