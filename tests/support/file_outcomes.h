// What the tests of files share: contents, errors as text, and the umask.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "values/bytes.h"

// The size of the blocks in which files are read and compared.
inline constexpr std::size_t fileBlock = std::size_t{256} << 10;

inline Bytes bytes(std::string text) { return Bytes(std::move(text)); }

// A condition of a replacement that holds.
inline bool always() { return true; }

// Returns "done", or the domain, code and description of the error that an operation throws.
std::string outcomeOf(const std::function<void()>& operation);

// Returns that text for an error of FileAttempt. `words` are those of the system.
std::string sentence(int code, const std::string& failed, const std::string& words, const std::string& path);

// Returns text of `size` bytes in which each block of the same size is different.
std::string patterned(std::size_t size);

class UmaskScope {
 public:
  explicit UmaskScope(unsigned mask) : old_(umask(static_cast<mode_t>(mask))) {}
  ~UmaskScope() { umask(old_); }
  UmaskScope(const UmaskScope&) = delete;
  UmaskScope& operator=(const UmaskScope&) = delete;

 private:
  mode_t old_;
};
