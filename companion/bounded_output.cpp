#include "companion/bounded_output.h"

#include "engine/sorter_error.h"

void BoundedOutput::add(std::string_view text) {
  constexpr std::size_t pieceSize = std::size_t{64} << 10;
  if (text.size() > bytesLeft_)
    throw sorterError(SorterError::previewHasTooManyLines,
                      "The bookmark file refers to the same titles so often that a preview of it would be far larger "
                      "than the file.");
  bytesLeft_ -= text.size();
  piece_ += text;
  if (piece_.size() >= pieceSize) finish();
}

void BoundedOutput::finish() {
  stream_ << piece_;
  piece_.clear();
}
