#include "platform/posix/write_all.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>

namespace {

// Blocks of this size, each at a multiple of it, let a file system store them in few large pieces.
constexpr std::size_t blockSize = std::size_t{1} << 20;

void writeText(const FileDescriptor& file, std::string_view text, const FileAttempt& attempt) {
  while (!text.empty()) {
    const ssize_t count = uninterrupted([&] { return ::write(file.get(), text.data(), text.size()); });
    if (count < 0) throw attempt.failure(errno);
    if (count == 0) throw attempt.failure(EIO);
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

void writeAll(const FileDescriptor& file, const BytePieces& bytes, const FileAttempt& attempt) {
  if (bytes.pieces().size() == 1) return writeText(file, bytes.pieces().front().text(), attempt);
  std::string block;
  block.reserve(std::min(blockSize, bytes.size()));
  BytePieces::Reader reader(bytes);
  while (!reader.isAtEnd()) {
    block.clear();
    while (block.size() < blockSize && !reader.isAtEnd()) block += reader.take(blockSize - block.size());
    writeText(file, block, attempt);
  }
}
