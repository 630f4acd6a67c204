// Standard input as a file.
#include "companion/standard_input.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>

#include "platform/error.h"

namespace {

// Reads standard input, which is in `input`, up to this many bytes.
std::string read(std::streambuf* input, std::size_t most = 1'000'000) {
  std::streambuf* const previous = std::cin.rdbuf(input);
  std::string text;
  try {
    text = std::string(standardInput(most).text());
  } catch (const Error& error) {
    text = error.description();
  }
  std::cin.rdbuf(previous);
  return text;
}

TEST(StandardInput, isReadToItsEnd) {
  for (const std::size_t size : {0U, 1U, 65'535U, 65'536U, 65'537U, 200'000U}) {
    std::stringbuf input(std::string(size, 'x'));
    EXPECT_EQ(read(&input), std::string(size, 'x'));
  }
}

TEST(StandardInput, isRefusedIfItIsTooLarge) {
  std::stringbuf input(std::string(1001, 'x'));
  EXPECT_EQ(read(&input, 1000), "Standard input is larger than any bookmark file.");
  std::stringbuf largest(std::string(1000, 'x'));
  EXPECT_EQ(read(&largest, 1000), std::string(1000, 'x'));
}

// A source that fails.
class Failing : public std::streambuf {
  int_type underflow() override { throw std::runtime_error("read error"); }
};

TEST(StandardInput, reportsThatItCannotBeRead) {
  Failing input;
  EXPECT_EQ(read(&input), "Standard input couldn’t be read.");
}

}  // namespace
