// Compares results with those recorded from Foundation's reader and writer for a few hundred small files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "platform/error.h"
#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"
#include "tests/support/plist_json.h"
#include "tests/support/scratch_folder.h"

namespace {

const std::filesystem::path folder = std::filesystem::path(QUILLERY_TEST_DATA) / "property_lists";

Bytes bytesOf(const std::filesystem::path& path) { return Bytes(contentOf(path)); }

const nlohmann::json& expected() {
  static const nlohmann::json json = nlohmann::json::parse(std::ifstream(folder / "expected.json"));
  return json;
}

std::string nameOf(PropertyListFormat format) {
  switch (format) {
    case PropertyListFormat::binary: return "binary";
    case PropertyListFormat::xml: return "xml";
    case PropertyListFormat::oldStyle: return "openstep";
  }
  return "";
}

// Runs over several implementations and files.
class PropertyListVector : public InterfaceTest<std::tuple<Implementation<PropertyLists>, std::string>> {
 protected:
  static const std::string& file() { return std::get<1>(GetParam()); }
  const std::unique_ptr<PropertyLists> lists_ = std::get<0>(GetParam()).make();
};

TEST_P(PropertyListVector, isReadOrRefusedAsOnThePlatform) {
  const nlohmann::json& wanted = expected().at(file());
  const Bytes bytes = bytesOf(folder / (file() + ".plist"));
  if (wanted.contains("refused")) {
    EXPECT_THROW(lists_->parse(bytes), Error);
    return;
  }
  const PropertyLists::Parsed parsed = lists_->parse(bytes);
  EXPECT_EQ(nameOf(parsed.format), wanted.at("format").get<std::string>());
  if (wanted.contains("nested_arrays"))
    EXPECT_EQ(nestedArrays(parsed.value), wanted.at("nested_arrays"));
  else
    EXPECT_EQ(toJson(parsed.value), wanted.at("value"));
}

using AcceptedPropertyList = PropertyListVector;

TEST_P(AcceptedPropertyList, roundTripsThroughBothFormats) {
  const PlistValue value = lists_->parse(bytesOf(folder / (file() + ".plist"))).value;
  EXPECT_EQ(lists_->parse(lists_->serialize(value, PropertyListFormat::binary)).value, value);
  EXPECT_EQ(lists_->parse(lists_->serialize(deepCopy(value), PropertyListFormat::binary)).value, value);
  try {
    const Bytes xml = lists_->serialize(value, PropertyListFormat::xml);
    // XML has only whole seconds, so the value may differ. Compare the text of a second round trip.
    EXPECT_EQ(lists_->serialize(lists_->parse(xml).value, PropertyListFormat::xml), xml);
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), 3852) << error.description();
  }
}

std::string testName(const testing::TestParamInfo<PropertyListVector::ParamType>& info) {
  std::string name = std::get<0>(info.param).name + "_";
  for (const char character : std::get<1>(info.param))
    if (std::isalnum(static_cast<unsigned char>(character)) != 0)
      name += character;
    else
      name += "_" + std::to_string(static_cast<unsigned char>(character)) + "_";
  return name;
}

// Files written by the platform: some values in both formats, some in one.
class WrittenByThePlatform : public PropertyListVector {
 protected:
  static Bytes file(const std::string& format) {
    return bytesOf(folder / (PropertyListVector::file() + "." + format + ".plist"));
  }
};

using XmlWrittenByThePlatform = WrittenByThePlatform;
TEST_P(XmlWrittenByThePlatform, isWrittenUnchanged) {
  const Bytes xml = file("xml");
  EXPECT_EQ(lists_->serialize(lists_->parse(xml).value, PropertyListFormat::xml).text(), xml.text());
}
TEST_P(XmlWrittenByThePlatform, isWrittenAnewUnchanged) {
  const Bytes xml = file("xml");
  EXPECT_EQ(lists_->serialize(deepCopy(lists_->parse(xml).value), PropertyListFormat::xml).text(), xml.text());
}
INSTANTIATE_TEST_SUITE_P(Files, XmlWrittenByThePlatform,
                         testing::Combine(testing::ValuesIn(propertyLists()),
                                          testing::Values("w-nested_data", "w-reals", "w-repeats", "w-scalars",
                                                          "w-titles")),
                         testName);

using BinaryWrittenByThePlatform = WrittenByThePlatform;
TEST_P(BinaryWrittenByThePlatform, doesNotGrowWhenWrittenAnew) {
  const Bytes binary = file("binary");
  const PlistValue value = lists_->parse(binary).value;
  const Bytes anew = lists_->serialize(deepCopy(value), PropertyListFormat::binary);
  EXPECT_LE(anew.size(), binary.size());
  EXPECT_EQ(lists_->parse(anew).value, value);
}
INSTANTIATE_TEST_SUITE_P(Files, BinaryWrittenByThePlatform,
                         testing::Combine(testing::ValuesIn(propertyLists()),
                                          testing::Values("w-fractional_dates", "w-repeats", "w-scalars", "w-titles")),
                         testName);

using BothWrittenByThePlatform = WrittenByThePlatform;
TEST_P(BothWrittenByThePlatform, haveTheSameValue) {
  const PlistValue fromXml = lists_->parse(file("xml")).value;
  const Bytes binary = file("binary");
  EXPECT_EQ(fromXml, lists_->parse(binary).value);
  EXPECT_LE(lists_->serialize(fromXml, PropertyListFormat::binary).size(), binary.size());
}
INSTANTIATE_TEST_SUITE_P(Files, BothWrittenByThePlatform,
                         testing::Combine(testing::ValuesIn(propertyLists()),
                                          testing::Values("w-repeats", "w-scalars", "w-titles")),
                         testName);

std::vector<std::string> names(bool refusedToo) {
  std::vector<std::string> all;
  for (const auto& [name, wanted] : expected().items())
    if (refusedToo || !wanted.contains("refused")) all.push_back(name);
  return all;
}

INSTANTIATE_TEST_SUITE_P(Files, PropertyListVector,
                         testing::Combine(testing::ValuesIn(propertyLists()), testing::ValuesIn(names(true))),
                         testName);
INSTANTIATE_TEST_SUITE_P(Files, AcceptedPropertyList,
                         testing::Combine(testing::ValuesIn(propertyLists()), testing::ValuesIn(names(false))),
                         testName);

}  // namespace
