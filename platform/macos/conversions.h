// Conversions between the program's types and Foundation's. Every conversion in this layer is here.
#pragma once

#include <string>
#include <string_view>

#include "platform/calendar.h"
#include "platform/error.h"
#include "platform/macos/objective_c.h"
#include "values/bytes.h"
#include "values/plist_value.h"

// Text. Malformed UTF-8 becomes U+FFFD, and so does an unpaired surrogate on conversion to UTF-8. UTF-16 units survive
// a round trip unchanged.
NSString* stringOf(std::u16string_view units);
NSString* stringOf(std::string_view utf8Text);
std::u16string unitsOf(NSString* string);
std::string textOf(NSString* string);

// Returns the file URL of a path.
NSURL* fileAddress(const std::string& path);

// Instants. A round trip keeps the resolution of the system clock, a microsecond.
NSDate* dateOf(Instant instant);
Instant instantOf(NSDate* date);

// Bytes. The result shares the memory of its argument and keeps it alive.
NSData* dataOf(const Bytes& bytes);
Bytes bytesOf(NSData* data);

// Returns an Error with the domain, code and localized description of `error`; for nil, that the system gave no reason.
Error errorOf(NSError* error);
// Returns an Error with the exception's name as its domain, code 0 and the exception's reason.
Error errorOf(NSException* exception);

// Returns the result of `call`. Throws an Error for an NSException.
template <class Call>
auto raisingErrors(Call call) -> decltype(call()) {
  @try {
    return call();
  } @catch (NSException* exception) {
    throw errorOf(exception);
  }
}

// Returns the value of a property-list object (NSString, NSNumber, NSDate, NSData, NSArray, or NSDictionary with string
// keys). Of the numbers, the two of CFBoolean become Booleans, floating-point types become reals, even without a
// fraction, and the others become integers. Dictionaries of Foundation are unordered, so the keys come in any order.
// An object in several places becomes one shared value. Throws Error for an object of another class, an integer outside
// -2^63 to 2^64-1, and more than plistMaximumDepth levels.
PlistValue valueOf(id object);

// Returns the value as objects that the caller must not change. A shared container becomes one shared object.
id objectOf(const PlistValue& value);
