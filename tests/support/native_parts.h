// The native parts that a virtual machine uses: property lists, calendars and collation.
#pragma once

#include <memory>

#include "tests/support/foundation_like_property_lists.h"

#ifdef __APPLE__

#include "platform/macos/foundation_calendar.h"
#include "platform/macos/foundation_collation.h"
#include "platform/macos/foundation_property_lists.h"

using SystemPropertyLists = FoundationPropertyLists;
using NativeCalendars = FoundationCalendars;
using EnglishCollation = FoundationCollation;  // uses the user's language, which must be English for the tests

#else

#include "platform/linux/civil_calendar.h"
#include "platform/linux/icu_collation.h"
#include "platform/linux/plist/property_list_codec.h"

using SystemPropertyLists = PropertyListCodec;
using NativeCalendars = CivilCalendars;

class EnglishCollation : public IcuCollation {
 public:
  EnglishCollation() : IcuCollation("en") {}
};

#endif

class NativePropertyLists : public PropertyLists {
 public:
  Parsed parse(const Bytes& bytes) override { return lists_->parse(bytes); }
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override {
    return lists_->serialize(value, format);
  }

 private:
  std::unique_ptr<PropertyLists> lists_ = asEnvironmentSays(std::make_unique<SystemPropertyLists>());
};
