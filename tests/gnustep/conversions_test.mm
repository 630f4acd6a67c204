// The conversions between the program's types and Foundation's.
#include "platform/macos/conversions.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>

#include "values/plist_text.h"

// As Foundation makes them; GNUstep invents a reason.
@interface ExceptionWithoutReason : NSException
@end

@implementation ExceptionWithoutReason
- (NSString*)reason {
  return nil;
}
@end

namespace {

std::string messageOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& error) {
    return error.domain() + " " + std::to_string(error.code()) + ": " + error.description();
  }
  return "no error";
}

PlistValue thereAndBack(const PlistValue& value) { return valueOf(objectOf(value)); }

TEST(Conversions, keepTextUnitForUnit) {
  const std::u16string text = u"a\u00E9\u4E2D\U0001F4D6\0b";
  EXPECT_EQ(unitsOf(stringOf(std::u16string_view(text))), text);
  EXPECT_EQ(textOf(stringOf(std::string_view("é中📖"))), "é中📖");
  EXPECT_EQ(unitsOf(stringOf(std::u16string_view())), u"");
}

TEST(Conversions, replaceMalformedUtf8) {
  EXPECT_EQ(unitsOf(stringOf(std::string_view("a\xFF"
                                              "b"))),
            u"a\uFFFDb");
}

TEST(Conversions, makeFileAddresses) {
  NSURL* const address = fileAddress("/a b/é#?.plist");
  EXPECT_TRUE(address.isFileURL);
  EXPECT_EQ(textOf(address.path), "/a b/é#?.plist");
}

TEST(Conversions, keepInstantsToTheMicrosecond) {
  for (const std::int64_t microseconds : {std::int64_t{0}, std::int64_t{1'700'000'000'123'456}, std::int64_t{-1}}) {
    const Instant instant{std::chrono::microseconds(microseconds)};
    EXPECT_EQ(std::chrono::round<std::chrono::microseconds>(instantOf(dateOf(instant)) - instant).count(), 0);
  }
  EXPECT_EQ(dateOf(Instant{std::chrono::seconds(978'307'200)}).timeIntervalSinceReferenceDate, 0);
}

TEST(Conversions, shareBytesAndKeepThemAlive) {
  const auto owner = std::make_shared<std::string>("content");
  @autoreleasepool {
    const Bytes bytes(owner, reinterpret_cast<const std::byte*>(owner->data()), owner->size());
    NSData* const data = dataOf(bytes);
    EXPECT_EQ(data.bytes, owner->data());
    EXPECT_EQ(data.length, owner->size());
    EXPECT_GE(owner.use_count(), 3);
    EXPECT_EQ(bytesOf(data).data(), bytes.data());
  }
  EXPECT_EQ(owner.use_count(), 1) << "released with the data";
}

TEST(Conversions, keepDataAliveWithItsBytes) {
  Bytes bytes;
  @autoreleasepool {
    NSMutableData* const data = [NSMutableData dataWithBytes:"content" length:7];
    bytes = bytesOf(data);
    [data resetBytesInRange:NSMakeRange(0, 7)];
  }
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()), "content");
}

TEST(Conversions, describeErrors) {
  NSDictionary* const information = @{NSLocalizedDescriptionKey : @"It couldn’t be done."};
  EXPECT_EQ(messageOf([&] {
              NSError* const error = [NSError errorWithDomain:@"Some" code:513 userInfo:information];
              throw errorOf(error);
            }),
            "Some 513: It couldn’t be done.");
  EXPECT_EQ(messageOf([] { throw errorOf(static_cast<NSError*>(nil)); }),
            textOf(NSCocoaErrorDomain) + " 0: The system gave no reason.");
}

NSException* exceptionWithReason(NSString* reason) {
  Class const type = reason != nil ? [NSException class] : [ExceptionWithoutReason class];
  return [[type alloc] initWithName:@"Name" reason:reason userInfo:nil];
}

TEST(Conversions, describeExceptions) {
  EXPECT_EQ(messageOf([] { throw errorOf(exceptionWithReason(@"Reason")); }), "Name 0: Reason");
  EXPECT_EQ(messageOf([] { throw errorOf(exceptionWithReason(nil)); }), "Name 0: Name");
}

TEST(RaisingErrors, returnsTheResult) {
  EXPECT_EQ(raisingErrors([] { return 5; }), 5);
}

TEST(RaisingErrors, makesAnErrorOfAnException) {
  EXPECT_EQ(messageOf([] { raisingErrors([] { [NSException raise:@"Name" format:@"Reason %d", 1]; }); }),
            "Name 0: Reason 1");
  EXPECT_EQ(messageOf([] { raisingErrors([] { return [@[] objectAtIndex:7] != nil; }); }).substr(0, 19),
            "NSRangeException 0:");
}

TEST(RaisingErrors, letsErrorsThrough) {
  EXPECT_EQ(messageOf([] { raisingErrors([]() -> int { throw Error("Own", 7, "As it was."); }); }),
            "Own 7: As it was.");
}

TEST(RaisingErrors, destroysWhatTheExceptionPasses) {
  const auto held = std::make_shared<int>();
  const auto raise = [](std::shared_ptr<int>) { [NSException raise:@"Name" format:@"Reason"]; };
  for (int time = 0; time < 3; ++time) EXPECT_THROW(raisingErrors([&] { raise(held); }), Error);
  EXPECT_EQ(held.use_count(), 1);
}

TEST(Values, surviveTheWayThereAndBack) {
  const PlistValue everything = PlistValue::dictionary(
      {{u"string", u"\u00E9 & <b> \U0001F4D6"},
       {u"", u""},
       {u"smallest", std::numeric_limits<std::int64_t>::min()},
       {u"minus one", -1},
       {u"zero", 0},
       {u"one", 1},
       {u"largest signed", std::numeric_limits<std::int64_t>::max()},
       {u"largest", std::numeric_limits<std::uint64_t>::max()},
       {u"real", 0.1},
       {u"whole real", 2.0},
       {u"true", true},
       {u"false", false},
       {u"date", PlistDate{700000000.25}},
       {u"data", Bytes(std::string("\0\1\xFF", 3))},
       {u"no data", Bytes(std::string())},
       {u"array", PlistValue::array({1, u"two", PlistValue::array({}), PlistValue::dictionary({})})},
       {u"dictionary", PlistValue::dictionary({{u"inner", 2.5}})}});
  @autoreleasepool {
    EXPECT_EQ(thereAndBack(everything), everything);
  }
}

TEST(Values, keepTheKindsOfNumbersApart) {
  EXPECT_EQ(thereAndBack(true).kind(), PlistKind::boolean);
  EXPECT_EQ(thereAndBack(1).kind(), PlistKind::integer);
  EXPECT_EQ(thereAndBack(1.0).kind(), PlistKind::real);
  EXPECT_EQ(valueOf([NSNumber numberWithFloat:1.5F]), PlistValue(1.5));
  EXPECT_EQ(valueOf([NSNumber numberWithUnsignedLongLong:1ULL << 63U]), PlistValue(std::uint64_t{1} << 63U));
}

TEST(Values, keepTheOrderOfArrays) {
  std::vector<PlistValue> numbers;
  for (int number = 0; number < 1000; ++number) numbers.emplace_back(number);
  EXPECT_EQ(thereAndBack(PlistValue::array(numbers)), PlistValue::array(numbers));
}

TEST(Values, shareWhatWasShared) {
  const PlistValue inner = PlistValue::array({u"shared"});
  const PlistValue outer = PlistValue::array({inner, inner});
  NSArray* const objects = objectOf(outer);
  EXPECT_EQ(objects[0], objects[1]);
  EXPECT_NE(objects[0], objectOf(inner));
  const PlistValue back = valueOf(objects);
  EXPECT_EQ(back.at(0).identity(), back.at(1).identity());
}

// Two to the power of 60 elements, if each container were converted for each of its places.
TEST(Values, takeNoLongerForNestedSharing) {
  PlistValue value = PlistValue::array({u"leaf"});
  for (int level = 0; level < 60; ++level) value = PlistValue::array({value, value});
  EXPECT_EQ(thereAndBack(value).depth(), value.depth());
}

TEST(Values, areNotMadeOfOtherObjects) {
  EXPECT_EQ(messageOf([] { valueOf([NSNull null]); }),
            textOf(NSCocoaErrorDomain) + " 3840: The property list couldn’t be used because it contains an object of "
                                         "the class NSNull.");
  EXPECT_NE(messageOf([] { valueOf(@[ [NSNull null] ]); }), "no error");
  EXPECT_EQ(messageOf([] { valueOf(
                               @{@5 : @"five"}); }),
            textOf(NSCocoaErrorDomain) +
                " 3840: The property list couldn’t be used because it contains a key that is no string.");
}

TEST(Values, haveABoundedNumberOfLevels) {
  @autoreleasepool {
    id object = @[];
    for (int level = 0; level < 5000; ++level) object = @[ object ];
    EXPECT_EQ(
        messageOf([&] { valueOf(object); }),
        textOf(NSCocoaErrorDomain) + " 3840: The property list couldn’t be used because it contains too many levels.");
  }
}

TEST(Values, countTheLevelsOfASharedContainer) {
  @autoreleasepool {
    id shared = @[];
    for (int level = 0; level < 300; ++level) shared = @[ shared ];
    id deep = shared;
    for (int level = 0; level < 300; ++level) deep = @[ deep ];
    EXPECT_NE(messageOf([&] { valueOf(@[ shared, deep ]); }), "no error");
    EXPECT_EQ(valueOf(@[ shared, shared ]).depth(), 302U);
  }
}

}  // namespace
