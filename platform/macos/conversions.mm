#include "platform/macos/conversions.h"

#import <CoreFoundation/CoreFoundation.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/posix/stack_levels.h"

namespace {

using Seconds = std::chrono::duration<double>;

Error unfit(const std::string& problem) {
  return {textOf(NSCocoaErrorDomain), static_cast<int>(NSPropertyListReadCorruptError),
          "The property list couldn’t be used because it contains " + problem + "."};
}

bool isBoolean(NSNumber* number) { return CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID(); }

bool isReal(NSNumber* number) { return CFNumberIsFloatType((__bridge CFNumberRef)number) != 0; }

// Foundation also stores integers of more than 64 bits, and its accessors truncate them silently.
PlistInteger integerOf(NSNumber* number) {
  const bool isNegative = [number compare:@0] == NSOrderedAscending;
  NSNumber* const kept = isNegative ? @(number.longLongValue) : @(number.unsignedLongLongValue);
  if ([number compare:kept] != NSOrderedSame) throw unfit("the integer " + textOf(number.stringValue));
  return isNegative ? PlistInteger(number.longLongValue) : PlistInteger(number.unsignedLongLongValue);
}

PlistValue numericValueOf(NSNumber* number) {
  if (isBoolean(number)) return static_cast<bool>(number.boolValue);
  if (isReal(number)) return number.doubleValue;
  return integerOf(number);
}

class ValueMaker {
 public:
  PlistValue make(id object) {
    if ([object isKindOfClass:[NSString class]]) return unitsOf(object);
    if ([object isKindOfClass:[NSNumber class]]) return numericValueOf(object);
    if ([object isKindOfClass:[NSDate class]])
      return PlistDate{static_cast<NSDate*>(object).timeIntervalSinceReferenceDate};
    if ([object isKindOfClass:[NSData class]]) return bytesOf(object);
    const bool isArray = [object isKindOfClass:[NSArray class]];
    if (!isArray && ![object isKindOfClass:[NSDictionary class]])
      throw unfit("an object of the class " + textOf(NSStringFromClass([object class])));
    return makeContainer(object, isArray);
  }

 private:
  // Each container is converted once. Otherwise nested sharing would take exponential time and memory.
  PlistValue makeContainer(id container, bool isArray) {
    const void* const identity = (__bridge const void*)container;
    const auto known = made_.find(identity);
    const unsigned levels = known != made_.end() ? known->second.depth() : 1;
    if (depth_ + levels > mostLevels_) throw unfit("too many levels");
    if (known != made_.end()) return known->second;
    ++depth_;
    PlistValue value = isArray ? makeArray(container) : makeDictionary(container);
    --depth_;
    made_.emplace(identity, value);
    return value;
  }

  PlistValue makeArray(NSArray* array) {
    std::vector<PlistValue> elements;
    elements.reserve(array.count);
    for (id element in array) elements.push_back(make(element));
    return PlistValue::array(std::move(elements));
  }

  PlistValue makeDictionary(NSDictionary* dictionary) {
    std::vector<PlistEntry> entries;
    entries.reserve(dictionary.count);
    for (id key in dictionary) {
      if (![key isKindOfClass:[NSString class]]) throw unfit("a key that is no string");
      entries.push_back({unitsOf(key), make(dictionary[key])});
    }
    return PlistValue::dictionary(std::move(entries));
  }

  unsigned mostLevels_ = stackLevels();
  unsigned depth_ = 0;  // of the containers around the current object
  std::unordered_map<const void*, PlistValue> made_;
};

NSNumber* numberOf(PlistInteger integer) {
  if (const auto value = integer.signedValue()) return @(static_cast<long long>(*value));
  return @(static_cast<unsigned long long>(integer.bits()));
}

NSString* stringIn(const PlistText& text) { return stringOf(std::u16string_view(text.utf16())); }

class ObjectMaker {
 public:
  id make(const PlistValue& value) {
    switch (value.kind()) {
      case PlistKind::string: return stringIn(*value.string());
      case PlistKind::integer: return numberOf(*value.integer());
      case PlistKind::real: return @(*value.real());
      case PlistKind::boolean: return [NSNumber numberWithBool:*value.boolean()];
      case PlistKind::date: return [NSDate dateWithTimeIntervalSinceReferenceDate:value.date()->seconds];
      case PlistKind::data: return dataOf(*value.data());
      case PlistKind::array:
      case PlistKind::dictionary: return makeContainer(value);
    }
    throw std::logic_error("a value of no kind");
  }

 private:
  id makeContainer(const PlistValue& value) {
    if (const auto known = made_.find(value.identity()); known != made_.end()) return known->second;
    id const container = value.is(PlistKind::array) ? makeArray(value) : makeDictionary(value);
    if (value.mayBeShared()) made_.emplace(value.identity(), container);
    return container;
  }

  id makeArray(const PlistValue& value) {
    NSMutableArray* const array = [NSMutableArray arrayWithCapacity:value.size()];
    for (std::size_t index = 0; index < value.size(); ++index) [array addObject:make(value.at(index))];
    return array;
  }

  id makeDictionary(const PlistValue& value) {
    NSMutableDictionary* const dictionary = [NSMutableDictionary dictionaryWithCapacity:value.size()];
    for (std::size_t index = 0; index < value.size(); ++index)
      dictionary[stringIn(value.keyAt(index))] = make(value.valueAt(index));
    return dictionary;
  }

  std::unordered_map<PlistValue::Identity, id> made_;
};

}  // namespace

NSString* stringOf(std::u16string_view units) {
  static_assert(sizeof(unichar) == sizeof(char16_t));
  return [[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(units.data()) length:units.size()];
}

NSString* stringOf(std::string_view utf8Text) { return stringOf(std::u16string_view(utf16(utf8Text))); }

std::u16string unitsOf(NSString* string) {
  std::u16string units(string.length, u'\0');
  [string getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
  return units;
}

std::string textOf(NSString* string) { return utf8(unitsOf(string)); }

NSURL* fileAddress(const std::string& path) { return [NSURL fileURLWithPath:stringOf(path)]; }

NSDate* dateOf(Instant instant) {
  return [NSDate dateWithTimeIntervalSince1970:Seconds(instant.time_since_epoch()).count()];
}

Instant instantOf(NSDate* date) {
  return Instant(std::chrono::round<Instant::duration>(Seconds(date.timeIntervalSince1970)));
}

NSData* dataOf(const Bytes& bytes) {
  const Bytes owner = bytes;
  return [[NSData alloc] initWithBytesNoCopy:const_cast<std::byte*>(bytes.data())
                                      length:bytes.size()
                                 deallocator:^(void*, NSUInteger) {
                                   static_cast<void>(owner);  // captured, so it lives as long as the block
                                 }];
}

Bytes bytesOf(NSData* data) {
  NSData* const immutable = [data copy];
  const std::shared_ptr<const void> owner(immutable.bytes, [immutable](const void*) { static_cast<void>(immutable); });
  return {owner, static_cast<const std::byte*>(immutable.bytes), immutable.length};
}

Error errorOf(NSError* error) {
  if (error == nil) return {textOf(NSCocoaErrorDomain), 0, "The system gave no reason."};
  return {textOf(error.domain), static_cast<int>(error.code), textOf(error.localizedDescription)};
}

Error errorOf(NSException* exception) {
  NSString* const reason = exception.reason;
  return {textOf(exception.name), 0, textOf(reason != nil ? reason : exception.name)};
}

PlistValue valueOf(id object) { return ValueMaker().make(object); }

id objectOf(const PlistValue& value) { return ObjectMaker().make(value); }
