// What a sort changes in a document: arrays in another order, and nothing else.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "values/plist_value.h"

struct RearrangedArray {
  std::uint32_t array;                  // its record
  std::vector<std::uint32_t> elements;  // the records of its elements in their new order
};

// The arrays of a document that `value` has in another order; absent if `value` is not the document's record `root`
// with only that changed, or if a changed container has more than one place in the document, so that the change would
// show in a place where `value` does not have it.
std::optional<std::vector<RearrangedArray>> rearrangedArrays(const PlistValue& value, std::uint32_t root);
