// Immutable bytes in shared storage: a whole file or a slice of one. A copy costs a reference count. The owner frees
// the memory, so a native layer can pass memory of its own kind.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

class Bytes {
 public:
  Bytes() = default;

  // `size` bytes from `start`, which must stay valid and unchanged while `owner` is held.
  Bytes(std::shared_ptr<const void> owner, const std::byte* start, std::size_t size)
      : start_(std::move(owner), start), size_(size) {}

  // Takes over `text` without copying it.
  explicit Bytes(std::string text) {
    auto owner = std::make_shared<const std::string>(std::move(text));
    size_ = owner->size();
    start_ = {owner, reinterpret_cast<const std::byte*>(owner->data())};
  }

  const std::byte* data() const { return start_.get(); }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  std::span<const std::byte> span() const { return {data(), size_}; }

  // Returns the same bytes as characters.
  std::string_view text() const { return {reinterpret_cast<const char*>(data()), size_}; }

  // Returns `size` bytes from `offset`, in the same storage. The range must lie inside these bytes.
  Bytes slice(std::size_t offset, std::size_t size) const { return {start_, data() + offset, size}; }

  friend bool operator==(const Bytes& a, const Bytes& b) {
    return a.size_ == b.size_ &&
           (a.data() == b.data() || a.size_ == 0 || std::memcmp(a.data(), b.data(), a.size_) == 0);
  }

 private:
  std::shared_ptr<const std::byte> start_;
  std::size_t size_ = 0;
};
