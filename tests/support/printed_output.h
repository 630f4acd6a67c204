// Stands in for standard output for as long as it lives.
#pragma once

#include <streambuf>
#include <string>

#include "tests/support/journal.h"

// What is printed is noted, to the character, as "printed" once it is flushed and not before, one entry for each
// flush. Text that is never flushed fails the test: nobody who reads a log file or a pipe would have seen it.
class PrintedOutput : public std::streambuf {
 public:
  explicit PrintedOutput(Journal& journal);
  ~PrintedOutput() override;
  PrintedOutput(const PrintedOutput&) = delete;
  PrintedOutput& operator=(const PrintedOutput&) = delete;

  // Everything that was flushed.
  const std::string& text() const { return text_; }

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* characters, std::streamsize count) override;
  int sync() override;

 private:
  Journal& journal_;
  std::string pending_;
  std::string text_;
  std::streambuf* previous_;
};
