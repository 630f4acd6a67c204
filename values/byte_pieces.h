// Bytes in pieces of storage. A rewritten file is mostly slices of the file that it was made from, and naming those
// slices costs far less than copying them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "values/bytes.h"

class BytePieces {
 public:
  BytePieces() = default;
  BytePieces(Bytes whole) { append(std::move(whole)); }  // NOLINT(google-explicit-constructor): one piece

  // Appends a piece without copying its bytes.
  void append(Bytes piece) {
    if (piece.empty()) return;
    ends_.push_back(size() + piece.size());
    pieces_.push_back(std::move(piece));
  }

  std::size_t size() const { return ends_.empty() ? 0 : ends_.back(); }
  const std::vector<Bytes>& pieces() const { return pieces_; }

  // Returns all bytes in one storage. Copies them, unless they are one piece.
  Bytes joined() const {
    if (pieces_.size() == 1) return pieces_.front();
    std::string text;
    text.reserve(size());
    for (const Bytes& piece : pieces_) text += piece.text();
    return Bytes(std::move(text));
  }

  // Reads bytes one after another, whatever pieces they are in.
  class Reader {
   public:
    // Reads `pieces` from `offset`, which is at most their size. They must outlive the reader.
    explicit Reader(const BytePieces& pieces, std::size_t offset = 0) : pieces_(pieces) {
      const auto end = std::upper_bound(pieces.ends_.begin(), pieces.ends_.end(), offset);
      next_ = static_cast<std::size_t>(end - pieces.ends_.begin());
      if (next_ == pieces.pieces_.size()) return;
      rest_ = pieces.pieces_[next_].text();
      rest_.remove_prefix(offset + rest_.size() - *end);
      ++next_;
    }

    // Moves past `text` and returns true if the bytes go on with it. Bytes in the same storage need no comparison.
    bool skip(std::string_view text) {
      while (!text.empty()) {
        const std::string_view part = take(text.size());
        if (part.empty()) return false;
        if (part.data() != text.data() && std::memcmp(part.data(), text.data(), part.size()) != 0) return false;
        text.remove_prefix(part.size());
      }
      return true;
    }

    // Returns the next bytes up to `most`, as many as are in one piece; none at the end.
    std::string_view take(std::size_t most) {
      if (rest_.empty() && next_ < pieces_.pieces_.size()) rest_ = pieces_.pieces_[next_++].text();
      const std::string_view part = rest_.substr(0, most);
      rest_.remove_prefix(part.size());
      return part;
    }

    bool isAtEnd() const { return rest_.empty() && next_ == pieces_.pieces_.size(); }

   private:
    const BytePieces& pieces_;
    std::size_t next_ = 0;   // the index of the piece after the rest
    std::string_view rest_;  // of the piece that is being read
  };

 private:
  std::vector<Bytes> pieces_;      // none is empty
  std::vector<std::size_t> ends_;  // of each piece
};
