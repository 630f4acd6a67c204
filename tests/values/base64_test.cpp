// Base64 text: the canonical form, and decoding of other text as on the platform.
#include "values/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// Characters next to the ranges of the alphabet, controls, and bytes outside ASCII.
constexpr std::string_view badCharacters("!*,-.:@[`{_\0\v\f\x7F\x80\xFF", 17);

// 96 digits on two lines, each with every range of the alphabet.
const std::string twoLines =
    "\n\tABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuv"
    "\n\twxyz0123456789+/wxyz0123456789+/ABCDEFGHIJKLMNOP\n\t";

TEST(Base64, encodesWithPadding) {
  const std::vector<std::pair<std::string, std::string>> vectors = {{"", ""},
                                                                    {"f", "Zg=="},
                                                                    {"fo", "Zm8="},
                                                                    {"foo", "Zm9v"},
                                                                    {"foob", "Zm9vYg=="},
                                                                    {"fooba", "Zm9vYmE="},
                                                                    {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : vectors) {
    EXPECT_EQ(encodeBase64(bytes), text);
    EXPECT_EQ(decodeBase64(text), bytes);
    EXPECT_TRUE(isCanonicalBase64(text)) << text;
  }
}

TEST(Base64, roundTripsEveryByte) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes.push_back(static_cast<char>(byte));
    const std::string text = encodeBase64(bytes);
    EXPECT_TRUE(isCanonicalBase64(text)) << text;
    EXPECT_EQ(decodeBase64(text), bytes);
  }
}

TEST(Base64, acceptsWhiteSpaceAnywhereInCanonicalText) {
  const std::string plain = encodeBase64(decodeBase64(twoLines));
  EXPECT_TRUE(isCanonicalBase64(twoLines));
  for (const char* text : {" ", "\t\r\n", "Q Q\n=\t=\r", "\n\tQUJD\n", "Q\nU\nI\n=", "QUJD\n\nQUJD", "QU\tJD\n QUI="})
    EXPECT_TRUE(isCanonicalBase64(text)) << text;
  EXPECT_EQ(decodeBase64("Q Q\n=\t=\r"), "A");
  EXPECT_EQ(decodeBase64("QU\tJD\n QUI="), "ABCAB");
  ASSERT_EQ(plain.size(), 96U);
  for (std::size_t place = 0; place <= plain.size(); ++place) {
    std::string text = plain;
    text.insert(place, "\r\n \t");
    EXPECT_TRUE(isCanonicalBase64(text)) << place;
    EXPECT_EQ(decodeBase64(text), decodeBase64(plain)) << place;
  }
}

TEST(Base64, refusesIncompleteGroupsAsCanonical) {
  for (const char* text : {"Q", "QU", "QUJ", "QUJDQ", "QUJD\nQU", "QQ=", "QUJDQQ="})
    EXPECT_FALSE(isCanonicalBase64(text)) << text;
}

TEST(Base64, refusesLeftoverBitsAsCanonical) {
  for (const char* text : {"QR==", "QX==", "QUJ=", "QUK=", "QUL=", "QUJDQR==", "\nQUJ=\n"})
    EXPECT_FALSE(isCanonicalBase64(text)) << text;
  for (const char* text : {"Qw==", "QUI=", "QUM="}) EXPECT_TRUE(isCanonicalBase64(text)) << text;
}

TEST(Base64, refusesLeftoverBitsAfterAnyNumberOfDigits) {
  for (std::size_t size = 1; size < 60; ++size) {
    std::string text = encodeBase64(std::string(size, '\0'));  // whose digits are all A
    const std::size_t padding = text.find('=');
    if (padding == std::string::npos) continue;
    for (const char* space : {"", "\n", "\n\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t"}) {
      EXPECT_TRUE(isCanonicalBase64(text.substr(0, padding) + space + text.substr(padding))) << size;
      EXPECT_FALSE(isCanonicalBase64(text.substr(0, padding - 1) + "B" + space + text.substr(padding))) << size;
    }
  }
}

TEST(Base64, refusesMisplacedPaddingAsCanonical) {
  for (const char* text : {"=", "====", "Q===", "QQ===", "QQ======", "QUJD=", "QUJD====", "QQ==QUJD", "QUI=QUJD",
                           "QQ=Q", "=QUJ", "QQ==\nQUJD\n"})
    EXPECT_FALSE(isCanonicalBase64(text)) << text;
}

TEST(Base64, findsABadCharacterAtEachPlace) {
  for (const char bad : badCharacters)
    for (std::size_t place = 0; place <= twoLines.size(); ++place) {
      std::string text = twoLines;
      text.insert(place, 1, bad);
      ASSERT_FALSE(isCanonicalBase64(text)) << static_cast<int>(bad) << " at " << place;
      ASSERT_EQ(decodeBase64(text), decodeBase64(twoLines)) << static_cast<int>(bad) << " at " << place;
    }
}

TEST(Base64, findsABadCharacterAfterPadding) {
  for (const char bad : badCharacters) {
    EXPECT_FALSE(isCanonicalBase64(std::string("QQ=") + bad + "=")) << static_cast<int>(bad);
    EXPECT_FALSE(isCanonicalBase64(std::string("QQ==") + bad)) << static_cast<int>(bad);
  }
}

TEST(Base64, dropsAnIncompleteGroupWhenDecoding) {
  for (const char* text : {"QUJDQ", "QUJDQU", "QUJDQUI", "QUJDQ=", "QUJD\nQQ\n="}) EXPECT_EQ(decodeBase64(text), "ABC");
}

TEST(Base64, decodesPaddingInTheMiddle) {
  EXPECT_EQ(decodeBase64("QQ==QUJD"), "AABC");
  EXPECT_EQ(decodeBase64("QUI=QUJD"), "ABABC");
  EXPECT_EQ(decodeBase64("=QUJ"), "\x01\x05\x09") << "padding counts as a digit of value 0";
  EXPECT_EQ(decodeBase64("QQ=Q"), std::string("A\0\x10", 3));
}

TEST(Base64, countsPaddingAcrossWhiteSpaceOnly) {
  for (const std::string between : {"", " ", "\t", "\n", "\r", "\v", "\f", "\v\f \n"})
    EXPECT_EQ(decodeBase64("QQ=" + between + "="), "A");
  for (const char* between : {"!", "-", "\v!", "!\v"})
    EXPECT_EQ(decodeBase64(std::string("QQ=") + between + "="), std::string("A\0", 2)) << between;
}

}  // namespace
