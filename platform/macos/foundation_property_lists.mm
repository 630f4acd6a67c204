#include "platform/macos/foundation_property_lists.h"

#include "platform/macos/conversions.h"

namespace {

PropertyListFormat formatOf(NSPropertyListFormat format) {
  switch (format) {
    case NSPropertyListOpenStepFormat: return PropertyListFormat::oldStyle;
    case NSPropertyListXMLFormat_v1_0: return PropertyListFormat::xml;
    case NSPropertyListBinaryFormat_v1_0: break;
  }
  return PropertyListFormat::binary;
}

NSPropertyListFormat formatOf(PropertyListFormat format) {
  switch (format) {
    case PropertyListFormat::oldStyle: return NSPropertyListOpenStepFormat;
    case PropertyListFormat::xml: return NSPropertyListXMLFormat_v1_0;
    case PropertyListFormat::binary: break;
  }
  return NSPropertyListBinaryFormat_v1_0;
}

}  // namespace

PropertyLists::Parsed FoundationPropertyLists::parse(const Bytes& bytes) {
  @autoreleasepool {
    return raisingErrors([&]() -> Parsed {
      NSError* error = nil;
      NSPropertyListFormat format = NSPropertyListBinaryFormat_v1_0;
      id const root = [NSPropertyListSerialization propertyListWithData:dataOf(bytes)
                                                                options:NSPropertyListImmutable
                                                                 format:&format
                                                                  error:&error];
      if (root == nil) throw errorOf(error);
      return {valueOf(root), formatOf(format)};
    });
  }
}

Bytes FoundationPropertyLists::serialize(const PlistValue& value, PropertyListFormat format) {
  @autoreleasepool {
    return raisingErrors([&] {
      NSError* error = nil;
      NSData* const data = [NSPropertyListSerialization dataWithPropertyList:objectOf(value)
                                                                      format:formatOf(format)
                                                                     options:0
                                                                       error:&error];
      if (data == nil) throw errorOf(error);
      return bytesOf(data);
    });
  }
}
