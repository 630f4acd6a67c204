// Output of limited size.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

// Passes text on to a stream, in large pieces. A small hostile file can refer to the same titles and folders so often
// that listing them would fill the disk.
class BoundedOutput {
 public:
  BoundedOutput(std::ostream& stream, std::size_t mostBytes) : stream_(stream), bytesLeft_(mostBytes) {}

  // Throws SorterError::previewHasTooManyLines if the text would exceed the limit. What came before stays in the
  // output.
  void add(std::string_view text);

  // Passes on the last piece.
  void finish();

 private:
  std::ostream& stream_;
  std::size_t bytesLeft_;
  std::string piece_;
};
