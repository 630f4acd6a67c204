// Compares our results with those of the platform's own reader and writer for a few hundred small files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "platform/error.h"
#include "platform/linux/plist/property_list_codec.h"
#include "tests/platform/linux/scratch_folder.h"
#include "tests/support/plist_json.h"

namespace {

const std::filesystem::path folder = std::filesystem::path(QUILLERY_TEST_DATA) / "property_lists";

// Files that we read differently from the platform, with the reasons.
const std::map<std::string, std::string> differences = {};

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

class PropertyListVector : public testing::TestWithParam<std::string> {
 protected:
  PropertyListCodec codec_;
};

TEST_P(PropertyListVector, isReadOrRefusedAsOnThePlatform) {
  const std::string& name = GetParam();
  const nlohmann::json& wanted = expected().at(name);
  const Bytes bytes = bytesOf(folder / (name + ".plist"));
  if (const auto difference = differences.find(name); difference != differences.end())
    GTEST_SKIP() << name << " differs on purpose: " << difference->second;
  if (wanted.contains("refused")) {
    EXPECT_THROW(codec_.parse(bytes), Error);
    return;
  }
  const PropertyLists::Parsed parsed = codec_.parse(bytes);
  EXPECT_EQ(nameOf(parsed.format), wanted.at("format"));
  if (wanted.contains("nested_arrays"))
    EXPECT_EQ(nestedArrays(parsed.value), wanted.at("nested_arrays"));
  else
    EXPECT_EQ(toJson(parsed.value), wanted.at("value"));
}

using AcceptedPropertyList = PropertyListVector;

TEST_P(AcceptedPropertyList, roundTripsThroughBothFormats) {
  const PlistValue value = codec_.parse(bytesOf(folder / (GetParam() + ".plist"))).value;
  EXPECT_EQ(codec_.parse(codec_.serialize(value, PropertyListFormat::binary)).value, value);
  EXPECT_EQ(codec_.parse(codec_.serialize(deepCopy(value), PropertyListFormat::binary)).value, value);
  try {
    const Bytes xml = codec_.serialize(value, PropertyListFormat::xml);
    // XML has only whole seconds, so the value may differ. Compare the text of a second round trip.
    EXPECT_EQ(codec_.serialize(codec_.parse(xml).value, PropertyListFormat::xml), xml);
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), 3852) << error.description();
  }
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
  std::string name;
  for (const char character : info.param)
    if (std::isalnum(static_cast<unsigned char>(character)) != 0)
      name += character;
    else
      name += "_" + std::to_string(static_cast<unsigned char>(character)) + "_";
  return name;
}

// Files written by the platform: some values in both formats, some in one.
class WrittenByThePlatform : public testing::TestWithParam<std::string> {
 protected:
  static Bytes file(const std::string& name, const std::string& format) {
    return bytesOf(folder / (name + "." + format + ".plist"));
  }
  PropertyListCodec codec_;
};

using XmlWrittenByThePlatform = WrittenByThePlatform;
TEST_P(XmlWrittenByThePlatform, isWrittenUnchanged) {
  const Bytes xml = file(GetParam(), "xml");
  EXPECT_EQ(codec_.serialize(codec_.parse(xml).value, PropertyListFormat::xml).text(), xml.text());
}
TEST_P(XmlWrittenByThePlatform, isWrittenAnewUnchanged) {
  const Bytes xml = file(GetParam(), "xml");
  EXPECT_EQ(codec_.serialize(deepCopy(codec_.parse(xml).value), PropertyListFormat::xml).text(), xml.text());
}
INSTANTIATE_TEST_SUITE_P(Files, XmlWrittenByThePlatform,
                         testing::Values("w-nested_data", "w-reals", "w-repeats", "w-scalars", "w-titles"), testName);

using BinaryWrittenByThePlatform = WrittenByThePlatform;
TEST_P(BinaryWrittenByThePlatform, doesNotGrowWhenWrittenAnew) {
  const Bytes binary = file(GetParam(), "binary");
  const PlistValue value = codec_.parse(binary).value;
  const Bytes anew = codec_.serialize(deepCopy(value), PropertyListFormat::binary);
  EXPECT_LE(anew.size(), binary.size());
  EXPECT_EQ(codec_.parse(anew).value, value);
}
INSTANTIATE_TEST_SUITE_P(Files, BinaryWrittenByThePlatform,
                         testing::Values("w-fractional_dates", "w-repeats", "w-scalars", "w-titles"), testName);

using BothWrittenByThePlatform = WrittenByThePlatform;
TEST_P(BothWrittenByThePlatform, haveTheSameValue) {
  const PlistValue fromXml = codec_.parse(file(GetParam(), "xml")).value;
  const Bytes binary = file(GetParam(), "binary");
  EXPECT_EQ(fromXml, codec_.parse(binary).value);
  EXPECT_LE(codec_.serialize(fromXml, PropertyListFormat::binary).size(), binary.size());
}
INSTANTIATE_TEST_SUITE_P(Files, BothWrittenByThePlatform, testing::Values("w-repeats", "w-scalars", "w-titles"),
                         testName);

std::vector<std::string> names(bool refusedToo) {
  std::vector<std::string> all;
  for (const auto& [name, wanted] : expected().items())
    if (refusedToo || !wanted.contains("refused")) all.push_back(name);
  return all;
}

INSTANTIATE_TEST_SUITE_P(Files, PropertyListVector, testing::ValuesIn(names(true)), testName);
INSTANTIATE_TEST_SUITE_P(Files, AcceptedPropertyList, testing::ValuesIn(names(false)), testName);

}  // namespace
