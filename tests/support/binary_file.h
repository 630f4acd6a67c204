// Builds binary property lists object by object, well-formed or not.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "values/bytes.h"

class BinaryFile {
 public:
  explicit BinaryFile(unsigned referenceSize = 1) : referenceSize_(referenceSize) {}

  // Adds an object of these raw bytes. Returns its number.
  std::uint32_t add(std::string object);
  // The same for the kinds of object that most tests need.
  std::uint32_t string(const std::string& ascii);
  std::uint32_t array(const std::vector<std::uint32_t>& elements);
  std::uint32_t dictionary(const std::vector<std::uint32_t>& keys, const std::vector<std::uint32_t>& values);
  // The same for a folder of Safari's shape, with its strings.
  std::uint32_t folder(const std::string& title, const std::vector<std::uint32_t>& children);
  std::uint32_t leaf(const std::string& title);

  // The whole file, with this top object.
  Bytes bytes(std::uint32_t top = 0) const;

 private:
  std::string counted(unsigned marker, std::size_t count) const;
  std::string reference(std::uint32_t object) const;

  unsigned referenceSize_;
  std::vector<std::string> objects_;
};
