// The errors of the property-list readers and writers.
#pragma once

#include <string>

#include "platform/error.h"

inline constexpr const char* propertyListDomain = "PropertyList";

// Codes as the platform that owns the format numbers them.
enum PropertyListErrorCode { propertyListReadCorrupt = 3840, propertyListWriteInvalid = 3852 };

// Bytes that are not a property list; `problem` says what is wrong and where, without a full stop.
inline Error unreadable(const std::string& problem) {
  return {propertyListDomain, propertyListReadCorrupt,
          "The data couldn’t be read because it isn’t a valid property list: " + problem + "."};
}

// A value that the format cannot hold.
inline Error unwritable(const std::string& problem) {
  return {propertyListDomain, propertyListWriteInvalid, "The property list couldn’t be written: " + problem + "."};
}
