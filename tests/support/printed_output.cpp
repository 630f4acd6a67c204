#include "tests/support/printed_output.h"

#include <gtest/gtest.h>

#include <iostream>
#include <utility>

PrintedOutput::PrintedOutput(Journal& journal) : journal_(journal), previous_(std::cout.rdbuf(this)) {}

PrintedOutput::~PrintedOutput() {
  std::cout.rdbuf(previous_);
  EXPECT_EQ(pending_, "") << "text was printed and not flushed";
}

PrintedOutput::int_type PrintedOutput::overflow(int_type character) {
  if (!traits_type::eq_int_type(character, traits_type::eof()))
    pending_.push_back(traits_type::to_char_type(character));
  return traits_type::not_eof(character);
}

std::streamsize PrintedOutput::xsputn(const char* characters, std::streamsize count) {
  pending_.append(characters, static_cast<std::size_t>(count));
  return count;
}

int PrintedOutput::sync() {
  if (pending_.empty()) return 0;
  const std::string flushed = std::exchange(pending_, {});
  journal_.perform("printed", flushed, [&] { text_ += flushed; });
  return 0;
}
