// Immutable bytes over shared storage: a whole file, or a slice of one, passed around at the price of a
// reference count. Whoever allocates the memory stays its owner, so a native layer can hand over its own.
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

  // `size` bytes from `start`, alive and unchanged for as long as `owner` is held.
  Bytes(std::shared_ptr<const void> owner, const std::byte* start, std::size_t size)
      : start_(std::move(owner), start), size_(size) {}

  // The bytes of `text`, which is moved from, not copied.
  explicit Bytes(std::string text) {
    auto owner = std::make_shared<const std::string>(std::move(text));
    size_ = owner->size();
    start_ = {owner, reinterpret_cast<const std::byte*>(owner->data())};
  }

  const std::byte* data() const { return start_.get(); }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  std::span<const std::byte> span() const { return {data(), size_}; }

  // The same bytes as characters, for text formats and for messages.
  std::string_view text() const { return {reinterpret_cast<const char*>(data()), size_}; }

  // `size` bytes from `offset`; both must lie inside. Shares the storage.
  Bytes slice(std::size_t offset, std::size_t size) const { return {start_, data() + offset, size}; }

  friend bool operator==(const Bytes& a, const Bytes& b) {
    return a.size_ == b.size_ &&
           (a.data() == b.data() || a.size_ == 0 || std::memcmp(a.data(), b.data(), a.size_) == 0);
  }

 private:
  std::shared_ptr<const std::byte> start_;
  std::size_t size_ = 0;
};
