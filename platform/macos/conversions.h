// The program's own types and Foundation's, turned into each other. Nothing else in this layer does that.
#pragma once

#include <string>
#include <string_view>

#include "values/bytes.h"
#include "values/plist_value.h"
#include "platform/calendar.h"
#include "platform/error.h"
#include "platform/macos/objective_c.h"

// Text. A malformed sequence of UTF-8 becomes U+FFFD, and so does an unpaired surrogate in UTF-8 text; UTF-16 units
// come back as they were.
NSString* stringOf(std::u16string_view units);
NSString* stringOf(std::string_view utf8Text);
std::u16string unitsOf(NSString* string);
std::string textOf(NSString* string);

// A path as a URL of a file.
NSURL* fileAddress(const std::string& path);

// Instants. They come back to the resolution of the system's clock, a microsecond.
NSDate* dateOf(Instant instant);
Instant instantOf(NSDate* date);

// Bytes, not copied: each holds the other's memory for as long as it lives.
NSData* dataOf(const Bytes& bytes);
Bytes bytesOf(NSData* data);

// The error with its domain, code and localized description; of nil, that no reason was given.
Error errorOf(NSError* error);
// An exception's name as domain, code 0, and its reason.
Error errorOf(NSException* exception);

// Calls `call` and answers what it does; an NSException becomes an Error.
template <class Call>
auto raisingErrors(Call call) -> decltype(call()) {
  @try {
    return call();
  } @catch (NSException* exception) {
    throw errorOf(exception);
  }
}

// An object of a property list (NSString, NSNumber, NSDate, NSData, NSArray, NSDictionary with strings as keys) as a
// value of exactly its kind: of the numbers, the two of CFBoolean are Booleans, those with a fraction reals, though it
// be zero, and the others integers. Dictionaries have no order in Foundation, so keys come in any. An object that is in
// several places becomes one value in all of them. Throws Error, saying what is wrong, for an object of another class,
// an integer beyond -2^63 to 2^64-1, and more than plistMaximumDepth levels.
PlistValue valueOf(id object);

// The same value as objects, immutable ones. A container that is in several places becomes one object in all of them.
id objectOf(const PlistValue& value);
