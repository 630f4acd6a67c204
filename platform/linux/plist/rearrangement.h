// Finds the changes that a sort makes to a document: arrays in another order.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "values/plist_value.h"

struct RearrangedArray {
  std::uint32_t array;                  // a record number
  std::vector<std::uint32_t> elements;  // the record numbers of its elements in their new order
};

// Returns the record of a document that a value is or was made from; absent for a value from elsewhere.
std::optional<std::uint32_t> recordIn(const PlistDocument& document, const PlistValue& value);

// Returns the arrays of a document that have another order in `value`. Absent if `value` differs from the document's
// record `root` in anything else, or if a changed container is shared: a rewritten file would then have the change in
// places where `value` does not.
std::optional<std::vector<RearrangedArray>> rearrangedArrays(const PlistValue& value, std::uint32_t root);
