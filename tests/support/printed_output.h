// Replaces standard output while it lives.
#pragma once

#include <streambuf>
#include <string>

#include "tests/support/journal.h"

// Records the exact text of each flush as one entry "printed". Text that is never flushed fails the test, because a
// reader of the log file or of a pipe would not see it in time.
class PrintedOutput : public std::streambuf {
 public:
  explicit PrintedOutput(Journal& journal);
  ~PrintedOutput() override;
  PrintedOutput(const PrintedOutput&) = delete;
  PrintedOutput& operator=(const PrintedOutput&) = delete;

  // All text flushed so far.
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
